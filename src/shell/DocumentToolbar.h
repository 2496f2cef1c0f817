#pragma once

#include "AppAppearance.h"
#include "AppMode.h"

#include <QToolBar>

#include <functional>

class QButtonGroup;
class QToolButton;

// The document window's toolbar: file settings, the two-way mode picker, and the appearance
// button that cycles System, Light, Dark.
class DocumentToolbar : public QToolBar {
    Q_OBJECT
public:
    explicit DocumentToolbar(QWidget* parent = nullptr);

    void setMode(AppMode mode);
    void setAppearance(AppAppearance appearance);

    std::function<void()> onFileSettings;
    std::function<void(AppMode)> onChooseMode;
    std::function<void()> onCycleAppearance;

    QToolButton* fileSettingsButton() const { return m_fileSettings; }
    QToolButton* modeButton(AppMode mode) const;
    QToolButton* appearanceButton() const { return m_appearance; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void restyle();

    AppAppearance m_appearanceValue = AppAppearance::system;
    QToolButton* m_fileSettings;
    QToolButton* m_mapMode;
    QToolButton* m_deliveryMode;
    QButtonGroup* m_modes;
    QToolButton* m_appearance;
};
