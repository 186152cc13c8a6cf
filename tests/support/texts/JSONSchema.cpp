#include "tests/support/texts/JSONSchema.h"

#include <algorithm>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>
#include <string_view>

namespace vornic::test {

namespace {

using JSON = nlohmann::json;

bool isOfType(const JSON& value, const std::string& type) {
    if (type == "integer") {
        return value.is_number_integer();
    }
    static const std::map<std::string, JSON::value_t> kKinds = {{"object", JSON::value_t::object},
                                                                {"array", JSON::value_t::array},
                                                                {"string", JSON::value_t::string},
                                                                {"boolean", JSON::value_t::boolean},
                                                                {"null", JSON::value_t::null}};
    if (type == "number") {
        return value.is_number();
    }
    if (!kKinds.contains(type)) {
        throw std::invalid_argument("the schema names no type " + type);
    }
    return value.type() == kKinds.at(type);
}

// Patterns are few, and each takes longer to be understood than to be used.
const std::regex& regexOf(const std::string& pattern) {
    static std::map<std::string, std::regex> known;
    return known.try_emplace(pattern, pattern).first->second;
}

// Characters of a text that is known to be UTF-8, as a parsed JSON text is.
std::size_t lengthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](unsigned char byte) { return (byte & 0xC0U) != 0x80U; }));
}

class Validation {
  public:
    explicit Validation(const JSON& root) : root_(root) {}

    void check(const JSON& value, const JSON& schema, const std::string& place) {
        for (const auto& [keyword, content] : schema.items()) {
            if (notes().contains(keyword)) {
                continue;
            }
            const auto rule = rules().find(keyword);
            if (rule == rules().end()) {
                throw std::invalid_argument("the keyword " + keyword + " is not known here");
            }
            (this->*rule->second)(value, schema, place);
        }
    }

    std::vector<std::string> faults;

  private:
    using Check = void (Validation::*)(const JSON&, const JSON&, const std::string&);

    static const std::set<std::string>& notes() {
        static const std::set<std::string> kNotes = {"$schema", "$id",      "title",
                                                     "$defs",   "$comment", "description"};
        return kNotes;
    }

    static const std::map<std::string, Check>& rules() {
        static const std::map<std::string, Check> kRules = {
            {"type", &Validation::type},
            {"const", &Validation::constant},
            {"enum", &Validation::enumeration},
            {"required", &Validation::required},
            {"properties", &Validation::properties},
            {"additionalProperties", &Validation::additional},
            {"propertyNames", &Validation::propertyNames},
            {"items", &Validation::items},
            {"minItems", &Validation::itemCount},
            {"maxItems", &Validation::itemCount},
            {"minimum", &Validation::range},
            {"maximum", &Validation::range},
            {"minLength", &Validation::length},
            {"pattern", &Validation::pattern},
            {"anyOf", &Validation::anyOf},
            {"$ref", &Validation::reference}};
        return kRules;
    }

    void fault(const std::string& place, const std::string& what) {
        faults.push_back((place.empty() ? "/" : place) + ": " + what);
    }

    void type(const JSON& value, const JSON& schema, const std::string& place) {
        const JSON& types = schema["type"];
        const bool fits = types.is_string()
                              ? isOfType(value, types)
                              : std::any_of(types.begin(), types.end(), [&value](const JSON& each) {
                                    return isOfType(value, each);
                                });
        if (!fits) {
            fault(place, value.dump() + " is not of the type " + types.dump());
        }
    }

    void constant(const JSON& value, const JSON& schema, const std::string& place) {
        if (value != schema["const"]) {
            fault(place, value.dump() + " is not " + schema["const"].dump());
        }
    }

    void enumeration(const JSON& value, const JSON& schema, const std::string& place) {
        const JSON& values = schema["enum"];
        if (std::find(values.begin(), values.end(), value) == values.end()) {
            fault(place, value.dump() + " is none of " + values.dump());
        }
    }

    void required(const JSON& value, const JSON& schema, const std::string& place) {
        for (const std::string name : schema["required"]) {
            if (value.is_object() && !value.contains(name)) {
                fault(place, name + " is missing");
            }
        }
    }

    void properties(const JSON& value, const JSON& schema, const std::string& place) {
        for (const auto& [name, content] : schema["properties"].items()) {
            if (value.is_object() && value.contains(name)) {
                check(value[name], content, place + "/" + name);
            }
        }
    }

    void additional(const JSON& value, const JSON& schema, const std::string& place) {
        if (!value.is_object()) {
            return;
        }
        const JSON known = schema.value("properties", JSON::object());
        for (const auto& [name, content] : value.items()) {
            if (known.contains(name)) {
                continue;
            }
            if (schema["additionalProperties"] == false) {
                fault(place, name + " has no place here");
            } else if (schema["additionalProperties"].is_object()) {
                check(content, schema["additionalProperties"], place + "/" + name);
            }
        }
    }

    void propertyNames(const JSON& value, const JSON& schema, const std::string& place) {
        if (!value.is_object()) {
            return;
        }
        for (const auto& [name, content] : value.items()) {
            check(JSON(name), schema["propertyNames"], place + "/" + name);
        }
    }

    void items(const JSON& value, const JSON& schema, const std::string& place) {
        for (std::size_t i = 0; value.is_array() && i < value.size(); ++i) {
            check(value[i], schema["items"], place + "/" + std::to_string(i));
        }
    }

    void itemCount(const JSON& value, const JSON& schema, const std::string& place) {
        if (value.is_array() && (value.size() < schema.value("minItems", std::size_t{0}) ||
                                 value.size() > schema.value("maxItems", value.size()))) {
            fault(place, "it has " + std::to_string(value.size()) + " items");
        }
    }

    void range(const JSON& value, const JSON& schema, const std::string& place) {
        const bool isBelow = schema.contains("minimum") && value < schema["minimum"];
        const bool isAbove = schema.contains("maximum") && value > schema["maximum"];
        if (value.is_number() && (isBelow || isAbove)) {
            fault(place, value.dump() + " is out of range");
        }
    }

    void length(const JSON& value, const JSON& schema, const std::string& place) {
        if (value.is_string() && lengthOf(value) < schema["minLength"].get<std::size_t>()) {
            fault(place, value.dump() + " is too short");
        }
    }

    void pattern(const JSON& value, const JSON& schema, const std::string& place) {
        const std::string text = value.is_string() ? value.get<std::string>() : "";
        if (value.is_string() && !std::regex_search(text, regexOf(schema["pattern"]))) {
            fault(place, value.dump() + " is not of the form " + schema["pattern"].dump());
        }
    }

    void anyOf(const JSON& value, const JSON& schema, const std::string& place) {
        const JSON& choices = schema["anyOf"];
        if (std::none_of(choices.begin(), choices.end(), [&](const JSON& choice) {
                Validation attempt(root_);
                attempt.check(value, choice, place);
                return attempt.faults.empty();
            })) {
            fault(place, "it is none of the " + std::to_string(choices.size()) + " choices");
        }
    }

    void reference(const JSON& value, const JSON& schema, const std::string& place) {
        const std::string target = schema["$ref"];
        if (!target.starts_with("#/")) {
            throw std::invalid_argument("the reference " + target + " leads out of the schema");
        }
        check(value, root_.at(JSON::json_pointer(target.substr(1))), place);
    }

    const JSON& root_;
};

}  // namespace

std::vector<std::string> schemaFaults(const JSON& value, const JSON& schema) {
    Validation validation(schema);
    validation.check(value, schema, "");
    return validation.faults;
}

}  // namespace vornic::test
