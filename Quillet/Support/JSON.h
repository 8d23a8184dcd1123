#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One object of a parsed JSON document. Unknown members are ignored; a member that is missing,
/// null or of another type than the one asked for is absent.
class JSONObject {
public:
    /// The document's top level; absent when the text isn't JSON or its top level isn't an object.
    static std::optional<JSONObject> parse(std::string_view text);

    bool contains(const char* key) const;  ///< With any value, null included.
    std::optional<std::string> text(const char* key) const;
    std::optional<double> number(const char* key) const;
    std::optional<bool> flag(const char* key) const;  ///< true and false, also written 1 and 0.
    std::optional<JSONObject> object(const char* key) const;
    /// An array of nothing but objects.
    std::optional<std::vector<JSONObject>> objects(const char* key) const;

    /// Whether a member asked for so far, in any object of this document, was of another type. A
    /// reader that takes a document as a whole or not at all asks this last.
    bool hasMismatch() const;

private:
    struct Document;

    JSONObject(std::shared_ptr<Document> document, const nlohmann::json& node);
    const nlohmann::json* member(const char* key) const;
    const nlohmann::json* member(const char* key,
                                 bool (nlohmann::json::*hasType)() const noexcept) const;

    std::shared_ptr<Document> document;  // keeps `node` alive
    const nlohmann::json* node;
};
