#include "App/ControlStrip.h"

namespace {

using Operations = TouchBarOperations;

constexpr const char* addItem = "addSystemTrayItem:";
constexpr const char* removeItem = "removeSystemTrayItem:";
constexpr const char* setPresence = "DFRElementSetControlStripPresenceForIdentifier";
constexpr const char* setCloseBox = "DFRSystemModalShowsCloseBoxWhenFrontMost";

// The newer name first; older systems know only the other.
constexpr const char* present[] = {"presentSystemModalTouchBar:systemTrayItemIdentifier:",
                                   "presentSystemModalFunctionBar:systemTrayItemIdentifier:"};
constexpr const char* dismiss[] = {"dismissSystemModalTouchBar:", "dismissSystemModalFunctionBar:"};

/// Whether there was such an operation to call.
bool call(const Operations::Table& table, const char* name,
          const Operations::Arguments& arguments) {
    const auto found = table.find(name);
    if (found == table.end()) return false;
    found->second(arguments);
    return true;
}

void callFramework(const char* name, const Operations::Arguments& arguments) {
    if (const auto& framework = Operations::shared().framework) call(*framework, name, arguments);
}

}  // namespace

bool ControlStrip::isAvailable() {
    return Operations::shared().itemClass.contains(addItem);
}

void ControlStrip::add(TouchBarItem& item) {
    if (!call(Operations::shared().itemClass, addItem, {.item = &item})) return;
    callFramework(setPresence, {.identifier = item.identifier, .flag = true});
}

void ControlStrip::remove(TouchBarItem& item) {
    callFramework(setPresence, {.identifier = item.identifier, .flag = false});
    call(Operations::shared().itemClass, removeItem, {.item = &item});
}

void ControlStrip::presentModal(TouchBar& touchBar, const std::string& trayIdentifier) {
    callFramework(setCloseBox, {.flag = true});
    for (const char* name : present) {
        if (call(Operations::shared().barClass, name,
                 {.touchBar = &touchBar, .identifier = trayIdentifier}))
            return;
    }
}

void ControlStrip::dismissModal(TouchBar& touchBar) {
    for (const char* name : dismiss) {
        if (call(Operations::shared().barClass, name, {.touchBar = &touchBar})) return;
    }
}
