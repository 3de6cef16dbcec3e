#include "support/servertest.h"

namespace kolmera::test {

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
