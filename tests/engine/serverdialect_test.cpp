#include <gtest/gtest.h>

#include "platform/engine/odbc/dialect.h"
#include "platform/engine/odbc/servertext.h"
#include "platform/engine/odbc/widetext.h"
#include "platform/error.h"

namespace kolmera::test {
namespace {

const Dialect& dialect(std::string_view dbms) { return *dialectNamed(dbms); }

/// Names that a table "Leverantör" with a column "Kod" would have.
std::optional<std::string> exactName(std::string_view name) {
    if (name == "leverantör" || name == "Leverantör") return "Leverantör";
    if (name == "KOD" || name == "Kod") return "Kod";
    return std::nullopt;
}

std::string shown(const ServerStatement& statement) {
    std::string text = statement.text;
    for (const Value& value : statement.parameters) {
        text += " | ";
        if (const auto* whole = std::get_if<std::int64_t>(&value)) text += std::to_string(*whole);
        if (const auto* number = std::get_if<double>(&value)) text += Locale().formatNumber(*number);
        if (const auto* yes = std::get_if<bool>(&value)) text += *yes ? "yes" : "no";
        if (const auto* date = std::get_if<Date>(&value)) text += date->iso();
        text += textOf(value);
    }
    return text;
}

TEST(ServerDialect, SqlServerStatementsAreItsOwn) {
    const Dialect& server = dialect("Microsoft SQL Server");
    const std::vector<std::string> columns = {"[A]", "[B]"};
    EXPECT_EQ(quotedName(server, "a]b"), "[a]]b]");
    EXPECT_EQ(
        selectText(server, {.columns = columns, .table = "[T]", .where = "[A] = ?", .order = "[A], [ID]", .limit = 8}),
        "SELECT TOP (8) [A], [B] FROM [T] WHERE [A] = ? ORDER BY [A], [ID]");
    EXPECT_EQ(insertText(server, "[T]", columns, "[ID]"),
              "INSERT INTO [T] ([A], [B]) VALUES (?, ?); SELECT CAST(SCOPE_IDENTITY() AS int)");
    EXPECT_EQ(insertText(server, "[T]", {}, "[ID]"),
              "INSERT INTO [T] DEFAULT VALUES; SELECT CAST(SCOPE_IDENTITY() AS int)");
    EXPECT_EQ(orderWithKey("[ID]", "[ID]"), "[ID]") << "refused: a column that the order has twice";
    EXPECT_EQ(orderWithKey("[IDX] DESC", "[ID]"), "[IDX] DESC, [ID]");
    EXPECT_EQ(orderWithKey("[A], [ID] DESC", "[ID]"), "[A], [ID] DESC");
    EXPECT_EQ(insertRowsText(server, "[T]", columns, 2),
              "SET IDENTITY_INSERT [T] ON; INSERT INTO [T] ([A], [B]) VALUES (?, ?), (?, ?); "
              "SET IDENTITY_INSERT [T] OFF");
    EXPECT_EQ(moveSequenceText(server, "T", "ID"), "");
    EXPECT_EQ(parameterMark(server, 7.5), "?");
    const ServerSelectRest rest = serverSelectRest(server, " WHERE Kod > 1 ORDER BY KOD DESC, 2;", Locale(), exactName);
    EXPECT_EQ(rest.order, "[Kod] DESC, 2");
    EXPECT_EQ(shown(rest.where), "[Kod] > ? | 1");
}

TEST(ServerDialect, OthersDifferWhereTheyMust) {
    const std::vector<std::string> columns = {"A"};
    EXPECT_EQ(insertText(dialect("PostgreSQL"), "T", {}, "ID"), "INSERT INTO T DEFAULT VALUES RETURNING ID");
    EXPECT_EQ(insertText(dialect("MariaDB"), "T", {}, "ID"), "INSERT INTO T () VALUES () RETURNING ID");
    EXPECT_EQ(selectText(dialect("MariaDB"), {.columns = columns, .table = "T", .limit = 1}),
              "SELECT A FROM T LIMIT 1");
    EXPECT_EQ(moveSequenceText(dialect("PostgreSQL"), "o'T", "ID"),
              "SELECT setval(pg_get_serial_sequence('\"o''T\"', 'ID'), max(\"ID\")) FROM \"o'T\"");
    EXPECT_EQ(dialectNamed("Oracle"), nullptr);
}

TEST(ServerDialect, EveryValueOfAStatementBecomesAParameter) {
    const struct {
        const char *fault, *statement, *expected;
    } cases[] = {
        {"texts in both quotes", "SELECT * FROM leverantör WHERE KOD = \"it's\" OR KOD = 'say \"a\"'",
         "SELECT * FROM `Leverantör` WHERE `Kod` = ? OR `Kod` = ? | it's | say \"a\""},
        {"a statement in a text", "DELETE FROM Leverantör WHERE Kod = '''; DROP TABLE x --'",
         "DELETE FROM `Leverantör` WHERE `Kod` = ? | '; DROP TABLE x --"},
        {"dates, numbers, truth", "UPDATE Leverantör SET Kod = #2026-02-28#, [b`c] = -1.5, d = TRUE WHERE ID IN (7,8)",
         "UPDATE `Leverantör` SET `Kod` = ?, `b``c` = ?, d = ? WHERE ID IN (?, ?) | 2026-02-28 | -1,5 | yes | 7 | 8"},
        {"minus between operands", "UPDATE Leverantör SET a = b - 1, c = (2)-3",
         "UPDATE `Leverantör` SET a = b - ?, c = (?) - ? | 1 | 2 | 3"},
        {"given values between its own", "UPDATE Leverantör SET a = 1, b = ?, c = 2",
         "UPDATE `Leverantör` SET a = ?, b = ?, c = ? | 1 | given | 2"},
        {"numbers that are part of the statement", "SELECT count(*) FROM Leverantör GROUP BY 1 ORDER BY 2 DESC",
         "SELECT count(*) FROM `Leverantör` GROUP BY 1 ORDER BY 2 DESC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const std::vector<Value> given = {std::string("given")};
        const bool takes = std::string_view(c.statement).find('?') != std::string_view::npos;
        const auto values = std::span(given).first(takes ? 1 : 0);
        EXPECT_EQ(shown(serverStatement(dialect("MariaDB"), c.statement, values, Locale(), exactName)), c.expected);
    }
    EXPECT_THROW(serverStatement(dialect("MariaDB"), "DELETE FROM a; DELETE FROM b", {}, Locale(), exactName),
                 PlatformError);
    EXPECT_THROW(serverStatement(dialect("MariaDB"), "rollback", {}, Locale(), exactName), PlatformError);
}

TEST(ServerDialect, ErrorsAreToldApart) {
    const struct {
        const char* fault;
        ServerError error;
        Failure failure;
    } cases[] = {
        {"SQL Server's duplicate", {"23000", 2627, {}}, Failure::DuplicateKey},
        {"SQL Server's foreign key", {"23000", 547, {}}, Failure::Other},
        {"SQL Server's cut text", {"22001", 2628, {}}, Failure::TextTooLong},
        {"SQL Server's lock", {"HYT00", 1222, {}}, Failure::Locked},
        {"SQL Server's deadlock has MariaDB's number for a lock", {"40001", 1205, {}}, Failure::Deadlock},
        {"a dead FreeTDS connection", {"08S01", 20047, {}}, Failure::Gone},
        {"MariaDB's lock", {"HY000", 1205, {}}, Failure::Locked},
        {"MariaDB's lost connection", {"HY000", 2013, {}}, Failure::Gone},
        {"PostgreSQL's lock", {"55P03", 1, {}}, Failure::Locked},
        {"SQL Server's cut text, with the state of a syntax error", {"42000", 2628, {}}, Failure::TextTooLong},
        {"PostgreSQL's wrong password looks like a lost connection",
         {"08001", 101, "connection failed: FATAL:  password authentication failed"},
         Failure::NotAdmitted},
        {"a refused connection", {"08001", 101, "connection failed: Connection refused"}, Failure::Gone},
        {"MariaDB's rights", {"42000", 1142, {}}, Failure::NotPermitted},
        {"a full disk of MariaDB's", {"HY000", 1114, {}}, Failure::Full},
        {"SQL Server's database for reading only", {"42000", 3906, {}}, Failure::ReadOnly},
        {"PostgreSQL shut down", {"57P01", 1, {}}, Failure::Gone},
    };
    for (const auto& c : cases) EXPECT_EQ(failureOf(c.error), c.failure) << c.fault;
    EXPECT_TRUE(survives(dialect("Microsoft SQL Server"), Failure::DuplicateKey));
    EXPECT_FALSE(survives(dialect("Microsoft SQL Server"), Failure::WrongType)) << "it may have ended the transaction";
    EXPECT_FALSE(survives(dialect("PostgreSQL"), Failure::DuplicateKey));
    EXPECT_FALSE(survives(dialect("MariaDB"), Failure::Deadlock));
}

TEST(ServerDialect, MalformedTextsStayApart) {
    const struct {
        const char* fault;
        std::string text, back;
    } cases[] = {
        {"every length of sequence", "aå€\U0001F600", "aå€\U0001F600"},
        {"a sequence cut short", "a\xC3", "a\uFFFD"},
        {"a sequence cut short by a letter", "\xE2\x82z", "\uFFFD\uFFFDz"},
        {"a byte that begins nothing", "\xFFz\x80", "\uFFFDz\uFFFD"},
        {"a surrogate", "\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
    };
    for (const auto& c : cases) EXPECT_EQ(fromWide(toWide(c.text)), c.back) << c.fault;
    EXPECT_EQ(fromWide(u"a\xD800z"), "a\uFFFDz") << "half a pair";
}

}  // namespace
}  // namespace kolmera::test
