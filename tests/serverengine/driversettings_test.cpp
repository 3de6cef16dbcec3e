#include "platform/engine/odbc/driversettings.h"

#include "support/servertest.h"

namespace kolmera::test {
namespace {

TEST(DriverSettings, AreThoseThatTheUserHasLeftOut) {
    const struct {
        const char* fault;
        const char* said;
        const char* told;
    } cases[] = {
        {"a driver's name is not found", "DRIVER={PostgreSQL Unicode};Server=x", ";Protocol=7.4-0;SSLmode=prefer"},
        {"a semicolon is doubled", "driver=PostgreSQL Unicode;", "Protocol=7.4-0;SSLmode=prefer"},
        {"a driver's file is not known", "Driver=/usr/lib/odbc/psqlodbcw.so", ";Protocol=7.4-0;SSLmode=prefer"},
        {"a word of the user is overruled", "Driver=PostgreSQL Unicode;protocol=7.4-2", ";SSLmode=prefer"},
        {"a short word is not known", "Driver=PostgreSQL Unicode;A1=7.4-1;CA=r", ""},
        {"another driver gets a word that it may refuse", "Driver=FreeTDS;Server=x", ""},
        {"a word within braces counts", "Driver=PostgreSQL Unicode;PWD={a;Protocol=1}",
         ";Protocol=7.4-0;SSLmode=prefer"},
        {"a certificate is not looked at", "Driver=MariaDB Unicode;SSLVERIFY=1", ""},
        {"MariaDB is not encrypted", "Driver=MariaDB Unicode", ";FORCETLS=1"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const DriverSettings settings(c.said);
        EXPECT_EQ(settings.connectString, std::string(c.said) + c.told);
        EXPECT_EQ(settings.unencrypted, c.told == std::string_view(";FORCETLS=1") ? c.said : "");
    }
    const bool postgres = TestServer::ofProcess().kind() == ServerKind::PostgreSql;
    const std::string& source = TestServer::ofProcess().connectString();
    EXPECT_EQ(DriverSettings(source).connectString,
              source + (postgres ? ";Protocol=7.4-0;SSLmode=prefer" : ";FORCETLS=1"));
}

}  // namespace
}  // namespace kolmera::test
