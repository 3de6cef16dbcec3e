#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "db/sqllayer.h"

namespace kolmera {

/// Reads the columns of Syinställningar2, the company's settings of one row, by column name. What is missing or cannot
/// be read is 0, "" or false. The company database has to be open before the object is made, and closed after it.
class ClsSyInställningar_2 {
  public:
    /// Throws PlatformError when the table cannot be opened.
    explicit ClsSyInställningar_2(SqlLayer& sql);

    [[nodiscard]] std::int32_t LngVal(std::string_view column);
    [[nodiscard]] double DblVal(std::string_view column);
    [[nodiscard]] float SinVal(std::string_view column);
    [[nodiscard]] std::string TxtVal(std::string_view column);
    [[nodiscard]] bool BoolVal(std::string_view column);

  private:
    template <typename Read>
    auto reading(Read read);

    Locale locale_;
    std::unique_ptr<Recordset> settings_;
};

}  // namespace kolmera
