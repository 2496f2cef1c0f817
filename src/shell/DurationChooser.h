#pragma once

#include <QString>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

// The rules of the duration row, apart from any widget.
namespace DurationRules {
inline constexpr std::array<int, 9> presets{20, 25, 30, 35, 40, 45, 50, 60, 90};
inline constexpr int shownWhenAbsent = 35;

bool isPreset(int minutes);
// The duration shown as chosen: the value, or 35 when there is none.
int selected(std::optional<int> duration);
// A custom draft, trimmed of spaces and tabs, read as whole minutes from 1 to 180 (a sign is
// allowed); anything else is refused.
std::optional<int> parseCustom(const QString& draft);
// The field's text for a duration: empty for a preset, else its number.
QString draftReset(std::optional<int> duration);
} // namespace DurationRules

// One button for each preset, then a small field for any other number of minutes, then "min".
class DurationChooser : public QWidget {
    Q_OBJECT
public:
    explicit DurationChooser(QWidget* parent = nullptr);

    std::optional<int> duration() const { return m_duration; }
    // Shows a duration as chosen; doesn't call back.
    void setDuration(std::optional<int> duration);
    QString customDraft() const;
    void setCustomDraft(const QString& draft);
    bool isCustomFocused() const { return m_customFocused; }
    bool isCustom() const;

    QPushButton* presetButton(int minutes) const;
    QLineEdit* customField() const { return m_custom; }

    // A preset pressed.
    std::function<void(int minutes)> onChoosePreset;
    // Return in the custom field.
    std::function<void()> onCommitCustom;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setCustomFocused(bool focused);
    void restyle();

    std::optional<int> m_duration;
    bool m_customFocused = false;
    std::array<QPushButton*, DurationRules::presets.size()> m_presets{};
    QLineEdit* m_custom;
    QLabel* m_unit;
};
