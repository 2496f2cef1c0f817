#pragma once

#include <QString>
#include <QtCore/qnamespace.h>

#include <optional>
#include <vector>

// The keys of the delivery view, as one table: the page and the view act on them, and the
// shortcut sheet lists them.
namespace DeliveryKeys {

enum class Action {
    startOrPause,
    stop,
    toTop,
    toEnd,
    pageUp,
    pageDown,
    toggleFollow,
    // What presenter remotes and pedals send; a setting turns these off.
    nextSection,
    previousSection,
    toggleDim,
    start,
};

struct Binding {
    Qt::Key key;
    Action action;
    QString description;
    bool isPresenterKey = false;
};

const std::vector<Binding>& table();
// The action of an unmodified key press, or nothing. Presenter keys count only when `presenterKeys`.
std::optional<Action> resolve(int key, bool presenterKeys);
// "Page Down", "Right", "F5" as the sheet shows them.
QString keyText(Qt::Key key);

} // namespace DeliveryKeys
