#pragma once

#include "base/JsonReader.h"

#include <optional>
#include <vector>

namespace varnel {

// Reading what may be there: anything of another kind counts as absent.

/// Nothing if there is no string of that key.
inline std::optional<QString> stringIn(const JsonObject& object, std::string_view key)
{
    const std::optional<JsonValue> value = object.find(key);
    return value && value->isString() ? std::optional(value->string()) : std::nullopt;
}

/// Empty if there is no string of that key.
inline QString textIn(const JsonObject& object, std::string_view key)
{
    return stringIn(object, key).value_or(QString());
}

inline std::optional<JsonObject> objectIn(const JsonObject& object, std::string_view key)
{
    const std::optional<JsonValue> value = object.find(key);
    return value && value->isObject() ? std::optional(value->object()) : std::nullopt;
}

/// The objects of an array, without its other elements; nothing if there is no array of that key.
inline std::optional<std::vector<JsonObject>> listIn(const JsonObject& object, std::string_view key)
{
    const std::optional<JsonValue> value = object.find(key);
    if (!value || !value->isArray())
        return std::nullopt;
    std::vector<JsonObject> objects;
    for (const JsonValue element : value->list([](JsonValue item) { return item; })) {
        if (element.isObject())
            objects.push_back(element.object());
    }
    return objects;
}

/// The same, empty if there is none.
inline std::vector<JsonObject> objectsIn(const JsonObject& object, std::string_view key)
{
    return listIn(object, key).value_or(std::vector<JsonObject>());
}

} // namespace varnel
