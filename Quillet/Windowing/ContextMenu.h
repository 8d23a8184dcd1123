#pragma once

#include <QMenu>
#include <QPoint>

#include "Windowing/ClickCatcher.h"
#include "Windowing/MenuItem.h"

/// A menu that pops up anywhere on the screen and closes at a click anywhere else.
class ContextMenu {
public:
    void show(const MenuItems& items, QPoint position);

private:
    QMenu menu;
    ClickCatcher catcher{&menu};
};
