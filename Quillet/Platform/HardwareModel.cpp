#include "Platform/HardwareModel.h"

#include <atomic>

#include "Platform/RegularFile.h"

namespace {

// Asked again and again, but a machine keeps its model.
std::string modelOnce() {
    static const std::string model = HardwareModel::namedIn("/sys/class/dmi/id/product_name");
    return model;
}

std::atomic<HardwareModel::Source> currentSource = modelOnce;

}  // namespace

std::string HardwareModel::namedIn(const std::string& path) {
    // Such a file gives a page as its size whatever is in it, so there is nothing at its end.
    std::string text = RegularFile::contents(path).value_or("");
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

std::string HardwareModel::identifier() {
    return currentSource.load()();
}

HardwareModel::Source HardwareModel::exchangeSource(Source source) {
    return currentSource.exchange(source ? source : modelOnce);
}
