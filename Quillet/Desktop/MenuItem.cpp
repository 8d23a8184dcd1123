#include "Desktop/MenuItem.h"

#include <QApplication>
#include <QMenu>

namespace {

void addRow(QMenu& menu, const MenuItem& item) {
    QAction* row = menu.addAction(QString::fromStdString(item.title).replace(u'&', "&&"));
    row->setEnabled(item.action != nullptr);
    row->setCheckable(item.checked.has_value());
    row->setChecked(item.checked.value_or(false));
    if (item.keyEquivalent) {
        row->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_A + (*item.keyEquivalent - 'a'))));
        row->setShortcutVisibleInContextMenu(true);
    }
    if (item.action) QObject::connect(row, &QAction::triggered, qApp, item.action, Qt::QueuedConnection);
}

}  // namespace

void fillMenu(QMenu& menu, const MenuItems& items) {
    menu.clear();
    for (const MenuItem& item : items) {
        if (item.isSeparator()) {
            menu.addSeparator();
        } else {
            addRow(menu, item);
        }
    }
}
