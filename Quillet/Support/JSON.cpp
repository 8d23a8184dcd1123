#include "Support/JSON.h"

#include <algorithm>
#include <nlohmann/json.hpp>

using nlohmann::json;

namespace {

constexpr int maxValues = 300'000;  // no log's tail has room for more; commas in strings count too
constexpr int maxControls = 1'000'000;

/// A parsed value can take a hundred times its text, and nlohmann's message about an error takes
/// eight times the line breaks and other controls before it.
bool isCostly(std::string_view text) {
    const auto begins = [](char c) { return c == ',' || c == '[' || c == '{'; };
    const auto isControl = [](char c) { return c >= 0 && c < ' '; };
    return std::ranges::count_if(text, begins) > maxValues ||
           std::ranges::count_if(text, isControl) > maxControls;
}

}  // namespace

struct JSONObject::Document {
    json root;
    bool mismatched = false;
};

JSONObject::JSONObject(std::shared_ptr<Document> owner, const json& object)
    : document(std::move(owner)), node(&object) {}

std::optional<JSONObject> JSONObject::parse(std::string_view text) {
    // nlohmann takes a null character for the end.
    if (text.find('\0') != std::string_view::npos || isCostly(text)) return std::nullopt;
    const auto document = std::make_shared<Document>();
    document->root = json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!document->root.is_object()) return std::nullopt;
    return JSONObject(document, document->root);
}

/// The member's value unless it is missing or null.
const json* JSONObject::member(const char* key) const {
    const auto found = node->find(key);
    return found == node->end() || found->is_null() ? nullptr : &*found;
}

const json* JSONObject::member(const char* key, bool (json::*hasType)() const noexcept) const {
    const json* value = member(key);
    if (!value || (value->*hasType)()) return value;
    document->mismatched = true;
    return nullptr;
}

bool JSONObject::hasMismatch() const {
    return document->mismatched;
}

bool JSONObject::contains(const char* key) const {
    return node->contains(key);
}

std::optional<std::string> JSONObject::text(const char* key) const {
    const json* value = member(key, &json::is_string);
    return value ? std::optional(value->get_ref<const std::string&>()) : std::nullopt;
}

std::optional<double> JSONObject::number(const char* key) const {
    const json* value = member(key, &json::is_number);
    return value ? std::optional(value->get<double>()) : std::nullopt;
}

std::optional<bool> JSONObject::flag(const char* key) const {
    const json* value = member(key);
    if (value && value->is_boolean()) return value->get<bool>();
    if (value && value->is_number() && (*value == 0 || *value == 1)) return *value == 1;
    if (value) document->mismatched = true;
    return std::nullopt;
}

std::optional<JSONObject> JSONObject::object(const char* key) const {
    const json* value = member(key, &json::is_object);
    return value ? std::optional(JSONObject(document, *value)) : std::nullopt;
}

std::optional<std::vector<JSONObject>> JSONObject::objects(const char* key) const {
    const json* value = member(key, &json::is_array);
    if (!value) return std::nullopt;
    std::vector<JSONObject> objects;
    for (const json& element : *value) {
        if (element.is_object()) objects.push_back(JSONObject(document, element));
    }
    if (objects.size() == value->size()) return objects;
    document->mismatched = true;
    return std::nullopt;
}
