#pragma once

#include <string_view>

namespace kolmera {

/// The texts of data/schema, built into the program (companyschema_text.cpp.in).
extern const std::string_view kSchemaText;
extern const std::string_view kIndexesText;

}  // namespace kolmera
