#include "Platform/HardwareModel.h"

#include <atomic>

#include "Platform/RegularFile.h"

namespace {

std::string systemModel() {
    static const std::string model = [] {
        std::string text = RegularFile::contents("/sys/class/dmi/id/product_name").value_or("");
        return text.erase(text.find_last_not_of(" \n") + 1);
    }();
    return model;
}

std::atomic<HardwareModel::Source> currentSource = systemModel;

}  // namespace

std::string HardwareModel::identifier() {
    return currentSource.load()();
}

HardwareModel::Source HardwareModel::exchangeSource(Source source) {
    return currentSource.exchange(source ? source : systemModel);
}
