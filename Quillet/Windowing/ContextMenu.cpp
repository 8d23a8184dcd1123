#include "Windowing/ContextMenu.h"

#include "Windowing/WindowSystem.h"

void ContextMenu::show(const MenuItems& items, QPoint position) {
    fillMenu(menu, items);
    if (!WindowSystem::isXwayland()) return menu.popup(position);
    menu.setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu, false);  // to which wlroots gives no keys
    catcher.cover([this, position](auto) { menu.popup(position); });
}
