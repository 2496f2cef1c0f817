#include "MapContextMenu.h"

#include "editing/NodeActions.h"
#include "editing/NodeCommands.h"
#include "look/EmojiText.h"

#include <QApplication>
#include <QKeySequence>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOptionMenuItem>

namespace MapContextMenu {

namespace {

// The style's menu entry, drawn twice: once without the title (background, check, key), and
// once with the title alone in the colour face, clipped to the title's column. Styles draw an
// entry's title and key in one font, and the colour face's digits would spoil the key.
class ColourEmojiMenuStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override
    {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        if (element != CE_MenuItem || !item || !isEmojiTitle(item->text)) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        const qsizetype tab = item->text.indexOf(QLatin1Char('\t'));
        QStyleOptionMenuItem rest(*item);
        rest.text = tab < 0 ? QString() : item->text.mid(tab);
        QProxyStyle::drawControl(element, &rest, painter, widget);

        QStyleOptionMenuItem title(*item);
        title.text = tab < 0 ? item->text : item->text.left(tab);
        title.font = EmojiText::emojiFont(item->font);
        const QRect column(item->rect.left(), item->rect.top(),
                           std::max(0, item->rect.width() - item->reservedShortcutWidth), item->rect.height());
        painter->save();
        painter->setClipRect(visualRect(item->direction, item->rect, column), Qt::IntersectClip);
        QProxyStyle::drawControl(element, &title, painter, widget);
        painter->restore();
    }

private:
    static bool isEmojiTitle(const QString& text)
    {
        const QString title =
            text.left(text.indexOf(QLatin1Char('\t')) < 0 ? text.size() : text.indexOf(QLatin1Char('\t')));
        if (EmojiText::colourFamily().isEmpty() || title.isEmpty() || !EmojiText::mayHoldEmoji(title))
            return false;
        const auto runs = EmojiText::runs(title);
        return runs.size() == 1 && runs.front().isEmoji;
    }
};

QStyle* colourEmojiMenuStyle()
{
    static QPointer<QStyle> style;
    if (!style) {
        // Over the style in force; owned by the application, so it goes when the menus have.
        style = new ColourEmojiMenuStyle(QStyleFactory::create(QApplication::style()->name()));
        style->setParent(qApp);
    }
    return style;
}

void addEntry(QMenu& menu, const QString& title, const NodeCommands::KeyChord& key, std::function<void()> run)
{
    QAction* action = menu.addAction(title);
    if (!key.isEmpty())
        action->setShortcut(QKeySequence(key.toString()));
    // Shown beside the entry only; the canvas's own keys do the work.
    action->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(action, &QAction::triggered, &menu, std::move(run));
}
} // namespace

void build(QMenu& menu, const NodeActions& actions)
{
    for (const NodeCommands::MenuItem& item : NodeCommands::contextMenu(actions.state)) {
        if (item.isSeparator()) {
            menu.addSeparator();
            continue;
        }
        if (item.command == NodeCommand::markSubmenu) {
            QMenu* marks = menu.addMenu(item.label);
            showEmojiInColour(*marks);
            for (const NodeCommands::MarkEntry& entry : NodeCommands::markEntries()) {
                if (entry.separatorBefore)
                    marks->addSeparator();
                addEntry(*marks, entry.title, entry.key,
                         [actions, entry] { actions.perform(entry.command, entry.marker); });
            }
            continue;
        }
        const NodeCommand command = item.command;
        addEntry(menu, item.label, item.key, [actions, command] { actions.perform(command); });
    }
}

void showEmojiInColour(QMenu& menu)
{
    menu.setStyle(colourEmojiMenuStyle());
}

} // namespace MapContextMenu
