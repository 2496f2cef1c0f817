#include "DeliveryKeys.h"

#include <QKeySequence>

namespace DeliveryKeys {

const std::vector<Binding>& table()
{
    static const std::vector<Binding> bindings = {
        {Qt::Key_Space, Action::startOrPause, QStringLiteral("Start or pause the clock")},
        {Qt::Key_Escape, Action::stop, QStringLiteral("Stop and reset the clock")},
        {Qt::Key_Return, Action::toggleFollow, QStringLiteral("Follow the runner, or stop following")},
        {Qt::Key_Home, Action::toTop, QStringLiteral("Go to the top of the page")},
        {Qt::Key_End, Action::toEnd, QStringLiteral("Go to the end of the page")},
        {Qt::Key_PageUp, Action::pageUp, QStringLiteral("Scroll up a page")},
        {Qt::Key_PageDown, Action::pageDown, QStringLiteral("Scroll down a page")},
        {Qt::Key_Right, Action::nextSection, QStringLiteral("Next section"), true},
        {Qt::Key_Left, Action::previousSection, QStringLiteral("Previous section"), true},
        {Qt::Key_B, Action::toggleDim, QStringLiteral("Dim the page; again to restore"), true},
        {Qt::Key_Period, Action::toggleDim, QStringLiteral("Dim the page; again to restore"), true},
        {Qt::Key_F5, Action::start, QStringLiteral("Start the clock"), true},
    };
    return bindings;
}

std::optional<Action> resolve(int key, bool presenterKeys)
{
    if (key == Qt::Key_Enter)
        key = Qt::Key_Return;
    for (const Binding& binding : table()) {
        if (binding.key == key && (presenterKeys || !binding.isPresenterKey))
            return binding.action;
    }
    return std::nullopt;
}

QString keyText(Qt::Key key)
{
    return QKeySequence(key).toString(QKeySequence::NativeText);
}

} // namespace DeliveryKeys
