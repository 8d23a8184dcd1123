#include "Desktop/ContextMenu.h"

#include "Desktop/Screens.h"

void ContextMenu::show(const MenuItems& items, QPoint position) {
    fillMenu(menu, items);
    if (!Screens::areXwayland()) return menu.popup(position);
    catcher.cover([this, position](QPoint) { menu.popup(position); });
}
