#include "App/TouchBar.h"

TouchBarOperations& TouchBarOperations::shared() {
    static TouchBarOperations operations;
    return operations;
}
