#pragma once

#include <QDBusAbstractAdaptor>

#include "App/AppDelegate.h"

/// What a second start calls.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.zendrik.Quillet")

public:
    explicit ApplicationAdaptor(AppDelegate* shown)
        : QDBusAbstractAdaptor(shown), delegate(shown) {}

    Q_SLOT void ShowPanel() { delegate->showPopover(); }

private:
    AppDelegate* const delegate;
};
