#include "Model/ModelNaming.h"

#include <algorithm>
#include <string>

#include "Fuzz.h"
#include "Support/Text.h"

namespace {

// Letter case never matters, and a label is never longer than its text.
template <typename Display>
void tryLabel(const std::string& text, Display display) {
    const auto label = display(text);
    require(label.has_value() == !text.empty());
    if (!label) return;
    require(label->size() <= text.size() && display(Text::lowercased(text)) == label);
    require(isUTF8(*label) || !isUTF8(text));
}

}  // namespace

void tryInput(std::string_view input) {
    const std::string text(input);
    tryLabel(text, ModelNaming::displayModel);
    tryLabel(text, ModelNaming::displayEffort);

    const auto model = ModelNaming::displayModel(text);
    std::string dashed = text;
    std::ranges::replace(dashed, '_', '-');
    require(ModelNaming::displayModel(dashed) == model &&
            (!model || model->find('_') == std::string::npos));

    require(ModelNaming::combined(model, {}) == model && ModelNaming::combined({}, model) == model);
    if (model) require(ModelNaming::combined(model, "High") == *model + " · High");
}
