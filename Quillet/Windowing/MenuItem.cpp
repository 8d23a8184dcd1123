#include "Windowing/MenuItem.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>

namespace {

/// Qt handles shortcuts only in menus that belong to a window.
class ShortcutKeys : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        auto* const menu = static_cast<QMenu*>(watched);
        const QKeySequence pressed(static_cast<QKeyEvent*>(event)->keyCombination());
        for (QAction* row : menu->actions()) {
            if (row->shortcut() != pressed) continue;
            menu->close();
            row->trigger();
            return true;
        }
        return false;
    }
};

void addRow(QMenu& menu, const MenuItem& item) {
    QAction* row = menu.addAction(QString::fromStdString(item.title).replace(u'&', "&&"));
    row->setEnabled(item.action != nullptr);
    row->setCheckable(item.checked.has_value());
    row->setChecked(item.checked.value_or(false));
    if (item.keyEquivalent) {
        row->setShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_A + (*item.keyEquivalent - 'a'))));
        row->setShortcutVisibleInContextMenu(true);
    }
    if (item.action)
        QObject::connect(row, &QAction::triggered, qApp, item.action, Qt::QueuedConnection);
}

}  // namespace

void fillMenu(QMenu& menu, const MenuItems& items) {
    static ShortcutKeys keys;
    menu.installEventFilter(&keys);  // installing it again does nothing
    menu.clear();
    for (const MenuItem& item : items) {
        if (item.isSeparator()) {
            menu.addSeparator();
        } else {
            addRow(menu, item);
        }
    }
}
