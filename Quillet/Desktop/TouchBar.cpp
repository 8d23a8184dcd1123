#include "Desktop/TouchBar.h"

TouchBarOperations& TouchBarOperations::shared() {
    static TouchBarOperations operations;
    return operations;
}
