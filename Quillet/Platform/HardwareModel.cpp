#include "Platform/HardwareModel.h"

#include <atomic>

#include "Platform/RegularFile.h"

namespace {

std::string firmwareModel() {
    std::string text = RegularFile::ending("/sys/class/dmi/id/product_name", 256).value_or("");
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

// Asked again and again, but a machine keeps its model.
std::string modelOnce() {
    static const std::string model = firmwareModel();
    return model;
}

std::atomic<HardwareModel::Source> currentSource = modelOnce;

}  // namespace

std::string HardwareModel::identifier() {
    return currentSource.load()();
}

HardwareModel::Source HardwareModel::exchangeSource(Source source) {
    return currentSource.exchange(source ? source : modelOnce);
}
