#include "support/servertest.h"

#include <charconv>

namespace kolmera::test {

std::string exactly(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? "true" : "false";
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    if (const auto* date = std::get_if<Date>(&value)) return date->iso();
    if (isNull(value)) return "Null";
    if (const auto* number = std::get_if<double>(&value)) {
        std::string digits(32, ' ');
        digits.resize(static_cast<std::size_t>(
            std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr - digits.data()));
        return digits;
    }
    return std::string(1, '\'').append(textOf(value)).append(1, '\'');
}

int errorOf(const std::function<void()>& statement) {
    try {
        statement();
        return 0;
    } catch (const PlatformError& error) {
        return error.endsRun() ? -error.number() : error.number();
    }
}

std::string select(Database& database, std::string_view statement) {
    const auto records = database.open(statement, RecordsetType::Snapshot);
    std::string text;
    for (; !records->eof(); records->moveNext()) {
        if (!text.empty()) text += "; ";
        for (int i = 0; i < static_cast<int>(records->fields().size()); ++i) {
            if (i > 0) text += ' ';
            text += exactly(records->value(i));
        }
    }
    return text;
}

void ServerTest::SetUp() {
    ASSERT_TRUE(TestServer::named())
        << "KOLMERA_TEST_SERVER is not set: these tests need a database server (tests/servers/server)";
    TestServer::ofProcess().reset();
    database = openServerDatabase(TestServer::ofProcess().connectString(),
                                  {.locale = Locale(), .wait = {}, .tables = companySchema(), .roundTrips = &trips});
}

std::unique_ptr<Database> ServerTest::open(const std::function<bool()>& wait) const {
    return openServerDatabase(TestServer::ofProcess().connectString(),
                              {.locale = Locale(), .wait = wait, .tables = companySchema()});
}

void ServerTest::add(Database& in, const std::string& number, const Value& supplier) {
    const auto records = dynaset(in, "Produkt");
    records->addNew();
    records->set("Nummer", number);
    records->set("Leverantör", supplier);
    records->update();
}

std::uint64_t ServerTest::tripsOf(const std::function<void()>& statement) {
    const std::uint64_t before = trips;
    statement();
    return trips - before;
}

}  // namespace kolmera::test
