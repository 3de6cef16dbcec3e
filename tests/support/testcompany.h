#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// Keeps what was passed over, one line each.
class PassedOverNotes final : public PassedOver {
  public:
    void note(std::string_view what, const PlatformError& error) override;
    std::vector<std::string> notes;
};

/// An open file company with every table of the suite, all of them empty.
class TestCompany {
  public:
    using Row = std::vector<std::pair<std::string_view, Value>>;

    explicit TestCompany(Locale::Kind locale = Locale::Kind::Swedish);

    SqlLayer sql;
    PassedOverNotes passedOver;

    void add(std::string_view table, const Row& row);
    /// Writes these columns of the table's first row.
    void change(std::string_view table, const Row& row);
    /// What a statement selects: values separated by blanks (numbers with a point, Null empty), a line feed behind
    /// each record.
    [[nodiscard]] std::string select(std::string_view statement);
    /// The table, on the record with that key.
    [[nodiscard]] std::unique_ptr<Recordset> find(std::string_view table, std::string_view index, std::string key);

  private:
    TemporaryFolder folder_;
};

}  // namespace kolmera::test
