#pragma once

#include <QList>
#include <QString>

#include <vector>

class QAction;
class QDialog;
class QWidget;

// Help > Keyboard Shortcuts: a sheet made from the tables the keys themselves are read from
// (the menus' items, the node command table and the delivery view's keys), so that it cannot
// drift from what the keys do.
namespace ShortcutSheet {

struct Row {
    QString group; // "Menus", "Mind map", "Delivery", "Presenter remotes"
    QString action;
    QString keys;

    bool operator==(const Row&) const = default;
};

// The rows, menus first; `menuActions` are the menu bar's items, those without a key skipped.
std::vector<Row> rows(const QList<QAction*>& menuActions);
// A window listing the rows, in plain text.
QDialog* make(const std::vector<Row>& rows, QWidget* parent);

} // namespace ShortcutSheet
