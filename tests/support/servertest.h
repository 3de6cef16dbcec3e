#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/companyschema.h"
#include "platform/engine/database.h"
#include "platform/engine/odbc/serverdatabase.h"
#include "platform/error.h"
#include "support/engineanswers.h"
#include "support/testserver.h"

namespace kolmera::test {

/// An empty company on the server that the tests were started for. Fails where there is none.
class ServerTest : public testing::Test {
  protected:
    void SetUp() override;

    [[nodiscard]] std::unique_ptr<Database> open(const std::function<bool()>& wait = {}) const;

    static std::unique_ptr<Recordset> dynaset(Database& in, std::string_view source) {
        return in.open(source, RecordsetType::Dynaset);
    }
    static std::unique_ptr<Recordset> seek(Database& in, const std::string& number) {
        return dynaset(in, "SELECT * FROM Produkt WHERE Nummer = '" + number + "' ORDER BY Nummer");
    }
    static void add(Database& in, const std::string& number, const Value& supplier = Null{});
    /// What another session sees.
    [[nodiscard]] std::string selectElsewhere(std::string_view statement) const { return select(*open(), statement); }
    /// Round trips that a statement costs.
    std::uint64_t tripsOf(const std::function<void()>& statement);

    std::uint64_t trips = 0;
    std::unique_ptr<Database> database;
};

}  // namespace kolmera::test
