// A validator for JSON Schema, as far as the project's schemas go. A keyword that it does not know is an
// error: a schema cannot ask for more than is checked. Patterns are read as POSIX extended ones.
#pragma once

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include <regex.h>

namespace ReportTests {

using Json = nlohmann::json;

class SchemaValidator {
public:
    explicit SchemaValidator(Json schema) : schema_(std::move(schema)) {}

    // What is wrong, a line each: "/clocks/0/period: expected null or number". Throws where the schema is
    // wrong.
    std::vector<std::string> validate(const Json& document) const {
        std::vector<std::string> errors;
        check(schema_, document, "", errors);
        return errors;
    }

private:
    using Errors = std::vector<std::string>;
    using Check = void (SchemaValidator::*)(const Json& schema, const Json& keyword, const Json& value,
                                            const std::string& at, Errors& errors) const;

    void check(const Json& schema, const Json& value, const std::string& at, Errors& errors) const {
        if (schema.is_boolean()) {
            if (!schema.get<bool>())
                errors.push_back(at + ": not allowed");
            return;
        }
        for (const auto& [name, keyword] : schema.items()) {
            const auto known = checks().find(name);
            if (known == checks().end())
                throw std::invalid_argument("unknown keyword '" + name + "' for " + at);
            if (known->second)
                (this->*known->second)(schema, keyword, value, at, errors);
        }
    }

    static const std::map<std::string, Check>& checks() {
        static const std::map<std::string, Check> table = {
            {"$schema", nullptr},
            {"$id", nullptr},
            {"$defs", nullptr},
            {"title", nullptr},
            {"description", nullptr},
            {"$ref", &SchemaValidator::reference},
            {"type", &SchemaValidator::type},
            {"const", &SchemaValidator::constant},
            {"enum", &SchemaValidator::enumeration},
            {"anyOf", &SchemaValidator::anyOf},
            {"required", &SchemaValidator::required},
            {"properties", &SchemaValidator::properties},
            {"additionalProperties", &SchemaValidator::additionalProperties},
            {"items", &SchemaValidator::items},
            {"minItems", &SchemaValidator::minItems},
            {"maxItems", &SchemaValidator::maxItems},
            {"minimum", &SchemaValidator::minimum},
            {"maximum", &SchemaValidator::maximum},
            {"exclusiveMinimum", &SchemaValidator::exclusiveMinimum},
            {"pattern", &SchemaValidator::pattern},
            {"minLength", &SchemaValidator::minLength},
        };
        return table;
    }

    void reference(const Json&, const Json& keyword, const Json& value, const std::string& at,
                   Errors& errors) const {
        const std::string target = keyword;
        if (!target.starts_with("#"))
            throw std::invalid_argument("a reference outside the schema: " + target);
        check(schema_.at(Json::json_pointer(target.substr(1))), value, at, errors);
    }

    static bool isOfType(const Json& value, const std::string& name) {
        static const std::map<std::string, std::function<bool(const Json&)>> types = {
            {"null", [](const Json& v) { return v.is_null(); }},
            {"boolean", [](const Json& v) { return v.is_boolean(); }},
            {"object", [](const Json& v) { return v.is_object(); }},
            {"array", [](const Json& v) { return v.is_array(); }},
            {"number", [](const Json& v) { return v.is_number(); }},
            {"integer", [](const Json& v) { return v.is_number_integer(); }},
            {"string", [](const Json& v) { return v.is_string(); }},
        };
        const auto known = types.find(name);
        if (known == types.end())
            throw std::invalid_argument("unknown type '" + name + "'");
        return known->second(value);
    }

    void type(const Json&, const Json& keyword, const Json& value, const std::string& at,
              Errors& errors) const {
        const Json names = keyword.is_array() ? keyword : Json::array({keyword});
        bool found = false;
        for (const Json& name : names)
            found |= isOfType(value, name); // each, so that an unknown one is never passed over
        if (!found)
            errors.push_back(at + ": expected " + keyword.dump() + ", found " + value.type_name());
    }

    void constant(const Json&, const Json& keyword, const Json& value, const std::string& at,
                  Errors& errors) const {
        if (value != keyword)
            errors.push_back(at + ": expected " + keyword.dump() + ", found " + value.dump());
    }

    void enumeration(const Json&, const Json& keyword, const Json& value, const std::string& at,
                     Errors& errors) const {
        if (std::ranges::find(keyword, value) == keyword.end())
            errors.push_back(at + ": expected one of " + keyword.dump() + ", found " + value.dump());
    }

    void anyOf(const Json&, const Json& keyword, const Json& value, const std::string& at,
               Errors& errors) const {
        bool found = false;
        for (const Json& schema : keyword) {
            Errors mismatches;
            check(schema, value, at, mismatches);
            found |= mismatches.empty();
        }
        if (!found)
            errors.push_back(at + ": fits none of the alternatives");
    }

    void required(const Json&, const Json& keyword, const Json& value, const std::string& at,
                  Errors& errors) const {
        if (!value.is_object())
            return;
        for (const std::string name : keyword)
            if (!value.contains(name))
                errors.push_back(at + ": '" + name + "' is missing");
    }

    void properties(const Json&, const Json& keyword, const Json& value, const std::string& at,
                    Errors& errors) const {
        if (!value.is_object())
            return;
        for (const auto& [name, schema] : keyword.items())
            if (value.contains(name))
                check(schema, value[name], at + "/" + name, errors);
    }

    void additionalProperties(const Json& schema, const Json& keyword, const Json& value,
                              const std::string& at, Errors& errors) const {
        if (!value.is_object())
            return;
        for (const auto& [name, property] : value.items())
            if (!schema.contains("properties") || !schema["properties"].contains(name))
                check(keyword, property, at + "/" + name, errors);
    }

    void items(const Json&, const Json& keyword, const Json& value, const std::string& at,
               Errors& errors) const {
        if (!value.is_array())
            return;
        for (std::size_t i = 0; i < value.size(); ++i)
            check(keyword, value[i], at + "/" + std::to_string(i), errors);
    }

    void minItems(const Json&, const Json& keyword, const Json& value, const std::string& at,
                  Errors& errors) const {
        if (value.is_array() && value.size() < keyword.get<std::size_t>())
            errors.push_back(at + ": fewer than " + keyword.dump() + " items");
    }

    void maxItems(const Json&, const Json& keyword, const Json& value, const std::string& at,
                  Errors& errors) const {
        if (value.is_array() && value.size() > keyword.get<std::size_t>())
            errors.push_back(at + ": more than " + keyword.dump() + " items");
    }

    void minimum(const Json&, const Json& keyword, const Json& value, const std::string& at,
                 Errors& errors) const {
        if (value.is_number() && value < keyword)
            errors.push_back(at + ": less than " + keyword.dump());
    }

    void maximum(const Json&, const Json& keyword, const Json& value, const std::string& at,
                 Errors& errors) const {
        if (value.is_number() && value > keyword)
            errors.push_back(at + ": more than " + keyword.dump());
    }

    void exclusiveMinimum(const Json&, const Json& keyword, const Json& value, const std::string& at,
                          Errors& errors) const {
        if (value.is_number() && value <= keyword)
            errors.push_back(at + ": not above " + keyword.dump());
    }

    void pattern(const Json&, const Json& keyword, const Json& value, const std::string& at,
                 Errors& errors) const {
        const std::string expression = keyword;
        regex_t compiled;
        if (regcomp(&compiled, expression.c_str(), REG_EXTENDED | REG_NOSUB) != 0)
            throw std::invalid_argument("not a pattern: " + expression);
        const bool matches =
            !value.is_string() || regexec(&compiled, value.get<std::string>().c_str(), 0, nullptr, 0) == 0;
        regfree(&compiled);
        if (!matches)
            errors.push_back(at + ": does not match " + expression);
    }

    void minLength(const Json&, const Json& keyword, const Json& value, const std::string& at,
                   Errors& errors) const {
        if (value.is_string() && value.get<std::string>().size() < keyword.get<std::size_t>())
            errors.push_back(at + ": shorter than " + keyword.dump());
    }

    Json schema_;
};

} // namespace ReportTests
