#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"

namespace kolmera {

struct SupplierRow {
    std::string number;
    std::string searchName;
};

/// The suppliers of the open company by number, as the supplier grid shows them. Throws PlatformError.
std::vector<SupplierRow> readSuppliers(SqlLayer& sql);

/// Row of the supplier with that number (letter case does not count), -1 when there is none.
int rowOfSupplier(const std::vector<SupplierRow>& suppliers, std::string_view number);

}  // namespace kolmera
