#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "db/serverschema.h"
#include "platform/engine/database.h"

namespace kolmera::test {

/// An own database on the database server that the environment names (KOLMERA_TEST_SERVER, "DSN=postgresql" or
/// "DSN=mariadb"). The server keeps a few databases for all test processes; a process holds the one that it uses by a
/// lock of the server, which goes with the process.
class TestServer {
  public:
    /// Whether the tests run on a server.
    static bool named();
    /// The database of this process.
    static TestServer& ofProcess();

    /// The session by which worlds state and read rows. It stays open from one world to the next: to open one and to
    /// learn the tables costs more than what most tests do.
    Database& session(const Locale& locale);
    /// An empty company: no rows but those that every company has, IDs from 1.
    void reset();
    /// Changes the database's tables for the test at hand; `reset` makes them anew. Names stand between double quotes.
    void changeTables(const std::string& statement);

    /// From now on the database can be read but not written, until `reset`.
    void refuseWriting();

    [[nodiscard]] const std::string& connectString() const { return connectString_; }
    [[nodiscard]] ServerKind kind() const { return kind_; }
    /// Another session on the company.
    [[nodiscard]] std::unique_ptr<Database> open(const Locale& locale = Locale()) const;
    /// A session that does not belong to a company, for what the server is asked about its sessions.
    [[nodiscard]] std::unique_ptr<Database> openAdministration() const;
    /// Ends all sessions on the company from the server's side.
    void endSessions();

    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;
    ~TestServer();

  private:
    TestServer();
    Database& company();
    void drop();
    void takeDatabase();
    void make();
    [[nodiscard]] bool whole();
    void empty();
    [[nodiscard]] std::string ask(const std::string& statement);

    std::string source_;  ///< "DSN=postgresql"
    ServerKind kind_;
    std::unique_ptr<Database> administration_;  ///< holds the lock
    std::string name_;                          ///< of the database
    std::string connectString_;
    std::unique_ptr<Database> company_;  ///< see `session`
    Locale::Kind locale_ = Locale::Kind::Swedish;
    bool tablesChanged_ = false;
};

}  // namespace kolmera::test
