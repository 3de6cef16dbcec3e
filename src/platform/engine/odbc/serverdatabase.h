#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/engine/database.h"
#include "platform/engine/schema.h"
#include "platform/locale.h"

namespace kolmera {

/// What opening a database on a server needs from its surroundings.
struct ServerOptions {
    Locale locale = Locale();
    /// As `OpenOptions::wait`: called again and again while another session holds a lock; false gives up, and the
    /// statement ends with kLocked, ending the run. Without it a lock is waited for 10 seconds.
    std::function<bool()> wait = {};
    /// Called again and again while the server does not answer, with the time that it has been waited for; false gives
    /// up, and the call ends with kServerSilent, ending the run. Nothing of this database may be called meanwhile.
    std::function<bool(std::chrono::milliseconds waited)> waitForAnswer = {};
    /// Tables that the program knows. A server's table of the same name takes the types, sizes and order of its fields
    /// from here as far as its own types allow: a server without a type for 0 to 255 then refuses the same values as a
    /// file. Other columns and tables are typed by the server's catalogue.
    std::vector<TableDef> tables = {};
    /// Counts what is sent to the server and waited for, when set; has to outlive the database.
    std::uint64_t* roundTrips = nullptr;
};

/// Opens a database on a server; the connect string goes to the ODBC driver manager, without what it says of our own
/// times (`ConnectString`). Throws kServerGone with the driver's own words when there is no connection, and when the
/// connection spoils letters, kWrongPassword when the server does not let the user in, and kServerSilent when it does
/// not answer in time.
///
/// Differences from a file: recordsets are snapshots and dynasets (no index, no seek). A dynaset on one table with the
/// key column ID can be written; it reads its records when they are asked for. Inside a transaction an error undoes
/// only the statement that failed, also on servers where it takes the transaction with it: what was written before is
/// then written again. A text with NUL in it is refused with kWrongType where the server or its driver would cut it.
/// Errors that lie with the server and not with the record (rights, read only, full) end the run. Once the connection
/// is lost, or the server has not answered in time, every call throws that error, ending the run.
std::unique_ptr<Database> openServerDatabase(const std::string& connectString, const ServerOptions& options);

/// The last ID that a table of a server has given, which may be above those of its rows: the next one is greater. 0
/// where the server does not tell, and for a database that is none.
std::int64_t lastServerId(Database& database, std::string_view table);

}  // namespace kolmera
