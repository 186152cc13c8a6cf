#ifndef VORNIC_TESTS_SUPPORT_TEXTS_JSON_SCHEMA_H
#define VORNIC_TESTS_SUPPORT_TEXTS_JSON_SCHEMA_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace vornic::test {

/// What keeps a JSON value from being as a JSON Schema (draft 2020-12) says, each with a pointer to
/// its place; empty when nothing does. Knows `type`, `const`, `enum`, `required`, `properties`,
/// `additionalProperties`, `propertyNames`, `items`, `minItems`, `maxItems`, `minimum`, `maximum`,
/// `minLength`, `pattern`, `anyOf` and `$ref` into `$defs`.
/// @throws std::invalid_argument for a schema with any other keyword, which would check nothing.
[[nodiscard]] std::vector<std::string> schemaFaults(const nlohmann::json& value,
                                                    const nlohmann::json& schema);

}  // namespace vornic::test

#endif
