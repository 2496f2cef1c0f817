#include "ShortcutSheet.h"

#include "delivery/DeliveryKeys.h"
#include "editing/NodeCommands.h"

#include <QAction>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QTableWidget>
#include <QVBoxLayout>

namespace ShortcutSheet {

namespace {

QString chordText(const NodeCommands::KeyChord& key)
{
    return QKeySequence(key.toString()).toString(QKeySequence::NativeText);
}

QString menuText(const QAction* action)
{
    QString text = action->text();
    const int tab = text.indexOf(QLatin1Char('\t'));
    if (tab >= 0)
        text.truncate(tab);
    return text.remove(QLatin1Char('&'));
}

} // namespace

std::vector<Row> rows(const QList<QAction*>& menuActions)
{
    std::vector<Row> out;
    for (const QAction* action : menuActions) {
        if (!action->shortcut().isEmpty())
            out.push_back(
                {QStringLiteral("Menus"), menuText(action), action->shortcut().toString(QKeySequence::NativeText)});
    }
    for (const NodeCommands::MenuItem& item : NodeCommands::editMenu(NodeActionState{})) {
        if (!item.isSeparator() && !item.key.isEmpty())
            out.push_back({QStringLiteral("Mind map"), item.label, chordText(item.key)});
    }
    for (const NodeCommands::MarkEntry& entry : NodeCommands::markEntries()) {
        if (!entry.key.isEmpty())
            out.push_back({QStringLiteral("Mind map"), entry.title, chordText(entry.key)});
    }
    // One row per action: B and period dim alike.
    for (const DeliveryKeys::Binding& binding : DeliveryKeys::table()) {
        const QString group = binding.isPresenterKey ? QStringLiteral("Presenter remotes") : QStringLiteral("Delivery");
        const QString key = DeliveryKeys::keyText(binding.key);
        auto same = std::find_if(out.begin(), out.end(), [&](const Row& row) {
            return row.group == group && row.action == binding.description;
        });
        if (same != out.end())
            same->keys += QStringLiteral(", ") + key;
        else
            out.push_back({group, binding.description, key});
    }
    return out;
}

QDialog* make(const std::vector<Row>& rows, QWidget* parent)
{
    auto* sheet = new QDialog(parent);
    sheet->setWindowTitle(QStringLiteral("Keyboard Shortcuts"));
    auto* table = new QTableWidget(int(rows.size()), 3, sheet);
    table->setHorizontalHeaderLabels({QStringLiteral("Where"), QStringLiteral("Action"), QStringLiteral("Keys")});
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    for (int i = 0; i < int(rows.size()); ++i) {
        // Items show their text as it is, never as markup.
        table->setItem(i, 0, new QTableWidgetItem(rows[i].group));
        table->setItem(i, 1, new QTableWidgetItem(rows[i].action));
        table->setItem(i, 2, new QTableWidgetItem(rows[i].keys));
    }
    table->resizeColumnsToContents();
    table->horizontalHeader()->setStretchLastSection(true);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, sheet);
    QObject::connect(buttons, &QDialogButtonBox::rejected, sheet, &QDialog::reject);
    auto* column = new QVBoxLayout(sheet);
    column->addWidget(table);
    column->addWidget(buttons);
    sheet->resize(560, 640);
    return sheet;
}

} // namespace ShortcutSheet
