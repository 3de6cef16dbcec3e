#include "history/runrecord.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <utility>

#include "history/changeblock.h"
#include "history/recordfile.h"
#include "platform/descriptor.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/privatename.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 64 * 1024;   // bytes
constexpr std::int64_t kRemarksWait = 250;  // milliseconds

std::int64_t milliseconds() {
    using namespace std::chrono;
    return duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::string hostName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : std::string();
}

/// Runs of one second stand in their order by name.
char turnWithin(const fs::path& folder, const std::string& second) {
    constexpr std::string_view kTurns = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::size_t turn = 0;
    std::error_code none;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, none)) {
        const std::string name = entry.path().filename().string();
        if (!name.starts_with(second) || name.size() == second.size()) continue;
        turn = std::max(turn, kTurns.find(name[second.size()]) + 1);
    }
    return kTurns[std::min(turn, kTurns.size() - 1)];
}

/// Who may use the folder may read the record, and write it, or SQLite could not let them read it while it is written.
void share(const fs::path& folder, const Descriptor& record) {
    struct stat of {};
    if (stat(folder.c_str(), &of) != 0) return;
    const bool sameGroup = fchown(record.get(), static_cast<uid_t>(-1), of.st_gid) == 0;
    (void)fchmod(record.get(), of.st_mode & (sameGroup ? 0666U : 0606U));
}

}  // namespace

struct RunRecord::File {
    explicit File(const fs::path& file) : connection(file, recordOptions(file, false)) {
        connection.prepareForRecord();
    }

    /// Numbers are not used again, so that a reader under way never mixes two blocks.
    void append(SqliteStatement& statement, std::int64_t number, std::string_view bytes) {
        const StatementUse use(statement);
        statement.bind(1, number);
        statement.bindBytes(2, bytes);
        statement.step();
    }
    void run(const char* statement, std::int64_t number) {
        SqliteStatement made(connection, statement);
        made.bind(1, number);
        made.run();
    }

    SqliteConnection connection;
    SqliteStatement addBlock, addRemarks, addKeys, keep;
};

RunRecord::RunRecord(const fs::path& folder, RunHeader header) : header_(std::move(header)) {
    header_.host = hostName();
    makeFolder(folder);
    makeFile(folder);
    try {
        open_ = std::make_unique<File>(file_);
        SqliteConnection& connection = open_->connection;
        transaction([&] {
            makeRecordTables(connection);
            writeHeader(connection, header_);
            connection.run("INSERT INTO header VALUES ('kept', 0)");
        });
        open_->addBlock =
            SqliteStatement(connection, "INSERT INTO block (number, data, first, last) VALUES (?, ?, ?, ?)");
        open_->addRemarks = SqliteStatement(connection, "INSERT INTO remark (number, data) VALUES (?, ?)");
        open_->addKeys = SqliteStatement(connection, "INSERT INTO keys (number, data) VALUES (?, ?)");
        open_->keep = SqliteStatement(connection, "UPDATE header SET value = ? WHERE key = 'kept'");
    } catch (const PlatformError& error) {
        fail(error);
        throw;
    }
}

RunRecord::~RunRecord() { close(); }

/// Who shares the folder around it shares the records: its group and its rights, as far as the system lets us.
void RunRecord::makeFolder(const fs::path& folder) {
    if (mkdir(folder.c_str(), S_IRWXU) == 0) {
        struct stat around {};
        const Descriptor made(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (stat(folder.parent_path().c_str(), &around) != 0) return;
        const bool sameGroup = fchown(made.get(), static_cast<uid_t>(-1), around.st_gid) == 0;
        const mode_t rights = around.st_mode & (S_IRWXU | S_IRWXO | S_ISVTX);
        (void)fchmod(made.get(), sameGroup ? rights | (around.st_mode & (S_IRWXG | S_ISGID)) : rights);
        return;
    }
    if (errno != EEXIST) throwSystemError(errno);
    if (fs::is_directory(fs::symlink_status(folder))) return;
    throw PlatformError(errors::kInvalidPath, "a link, or no folder, is in the way").about(folder.string());
}

void RunRecord::makeFile(const fs::path& folder) {
    constexpr std::size_t kLetters = 4;
    for (int attempts = 100;; --attempts) {
        const std::tm now = fmt::localtime(std::time(nullptr));
        const std::string second = fmt::format("{:%Y%m%d-%H%M%S}-", now);
        header_.id = second + turnWithin(folder, second) + privateDigits().substr(0, kLetters - 1);
        if (header_.started.empty()) header_.started = fmt::format("{:%Y-%m-%dT%H:%M:%S}", now);
        file_ = folder / (header_.id + std::string(kRecordEnding));
        const int made = open(file_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (made < 0 && errno == EEXIST && attempts > 0) continue;
        const Descriptor descriptor(made);
        share(folder, descriptor);
        lock_.emplace(folder, header_.id);
        header_.locked = lock_->held();
        return;
    }
}

void RunRecord::transaction(const std::function<void()>& statements) {
    open_->connection.begin();
    statements();
    open_->connection.commit();
}

void RunRecord::write(const std::function<void()>& statements) noexcept {
    if (!open_) return;
    try {
        transaction(statements);
    } catch (const PlatformError& error) {
        fail(error);
    } catch (const std::exception& error) {
        fail(PlatformError(errors::kInternal, error.what()));
    }
}

void RunRecord::fail(const PlatformError& error) noexcept {
    failure_ = error;
    open_.reset();
    lock_.reset();
    try {
        removeRecordFile(file_);
    } catch (const PlatformError&) {
        // What could not be written may not be removable either; it is told that there is no record.
    }
}

void RunRecord::change(const std::function<void(RunHeader&)>& change) {
    change(header_);
    write([&] { writeHeader(open_->connection, header_); });
}

void RunRecord::remark(const RecordRemark& remark) {
    if (!open_) return;
    writeRemark(remarks_, remark);
    if (remarks_.size() >= kBlock) write([&] { flushRemarks(); });
}

void RunRecord::key(std::string_view key) {
    if (!open_ || key.empty() || key == lastKey_) return;
    lastKey_.assign(key);
    keys_.text(key);
    if (keys_.size() >= kBlock) write([&] { flushKeys(); });
}

void RunRecord::copy(std::string_view bytes) {
    write([&] {
        SqliteStatement add(open_->connection, "INSERT INTO copy (number, data) VALUES (?, ?)");
        open_->append(add, ++copyBlocks_, bytes);
    });
}

void RunRecord::close() {
    if (!open_) return;
    write([&] {
        flushRemarks();
        flushKeys();
    });
    open_.reset();
    lock_.reset();
}

std::int64_t RunRecord::place() {
    if (at_.record == 0 || at_.record == placed_ || !open_) return at_.record;
    placed_ = at_.record;
    if (changes_.empty() || first_ == 0) first_ = at_.record;
    last_ = std::max(last_, at_.record);
    writePlace(changes_, at_);
    return at_.record;
}

int RunRecord::labelOf(const TableDef& table) {
    const auto known = std::ranges::find(labels_, &table, &std::pair<const TableDef*, int>::first);
    if (known != labels_.end()) return known->second;
    return labels_.emplace_back(&table, labelColumn(table)).second;
}

void RunRecord::heard(ChangeKind kind, const ChangedRow& row) {
    if (!open_) return;
    writeRow(changes_, kind, row, labelOf(row.table));
    if (changes_.size() >= kBlock) write([&] { flushChanges(); });
}

void RunRecord::kept() {
    if (changes_.empty() && written_ == kept_) return;
    write([&] {
        flushChanges();
        const StatementUse use(open_->keep);
        open_->keep.bind(1, written_);
        open_->keep.step();
        kept_ = written_;
        if (milliseconds() - flushedRemarks_ >= kRemarksWait) flushRemarks();
    });
}

void RunRecord::stands() {
    standing_ = kept_;
    mark_.reset();
}

void RunRecord::undone() {
    changes_.clear();
    first_ = last_ = placed_ = 0;
    mark_.reset();
    if (written_ == standing_) return;
    write([&] {
        open_->run("UPDATE header SET value = ? WHERE key = 'kept'", standing_);
        open_->run("DELETE FROM block WHERE number > ?", standing_);
        kept_ = standing_;
    });
}

void RunRecord::statementBegins() {
    mark_ = Mark{.block = changes_.mark(), .first = first_, .last = last_, .written = written_};
}

/// Where blocks have been written since the statement began, the first of them begins with what is to stay.
void RunRecord::statementFailed() {
    if (!mark_ || !open_) return;
    const Mark mark = *std::exchange(mark_, std::nullopt);
    placed_ = 0;
    first_ = mark.first;
    last_ = mark.last;
    if (mark.written == written_) return changes_.back(mark.block);
    write([&] {
        SqliteStatement block(open_->connection, "SELECT data FROM block WHERE number = ?");
        block.bind(1, mark.written + 1);
        if (block.step()) changes_.backInto(std::string(block.bytes(0)), mark.block);
        block.reset();
        open_->run("DELETE FROM block WHERE number > ?", mark.written);
    });
}

void RunRecord::flushChanges() {
    if (changes_.empty()) return;
    SqliteStatement& add = open_->addBlock;
    add.bind(3, first_);
    add.bind(4, last_);
    open_->append(add, ++written_, changes_.bytes());
    changes_.clear();
    first_ = last_ = placed_ = 0;
}

void RunRecord::flushRemarks() {
    flushedRemarks_ = milliseconds();
    if (remarks_.empty()) return;
    open_->append(open_->addRemarks, ++remarkBlocks_, remarks_.bytes());
    remarks_.clear();
}

void RunRecord::flushKeys() {
    if (keys_.empty()) return;
    open_->append(open_->addKeys, ++keyBlocks_, keys_.bytes());
    keys_.clear();
}

}  // namespace kolmera
