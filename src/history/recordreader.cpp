#include "history/recordreader.h"

#include "history/changeblock.h"
#include "history/recordfile.h"
#include "platform/compression.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/error.h"

namespace kolmera {

struct RecordReader::Impl {
    explicit Impl(const std::filesystem::path& file) : connection(file, recordOptions(file, true)) {
        header = readHeader(connection);
        remarksHaveLengths = connection.number("PRAGMA user_version") > 1;
        header.id = file.stem().string();
    }

    /// Hands over block after block; each is a reading of its own, so that the program that writes the record never
    /// waits for one that shows it.
    void forEachBlock(const char* statement, const std::function<bool(std::string_view)>& take) {
        SqliteStatement query(connection, statement);
        std::string block;
        for (std::int64_t last = 0;;) {
            {
                const StatementUse use(query);
                query.bind(1, last);
                if (!query.step()) return;
                last = query.integer(0);
                block = query.bytes(1);
            }
            if (!take(block)) return;
        }
    }

    SqliteConnection connection;
    RunHeader header;
    bool remarksHaveLengths = false;
};

RecordReader::RecordReader(const std::filesystem::path& file) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(file, none))) {
        throw PlatformError(errors::kFileNotFound, "the file does not exist").about(file.string());
    }
    impl_ = std::make_unique<Impl>(file);
}

RecordReader::~RecordReader() = default;

const RunHeader& RecordReader::header() const { return impl_->header; }

void RecordReader::forEachChange(const std::function<bool(const RowChange&)>& take) const {
    impl_->forEachBlock(
        "SELECT number, data FROM block WHERE number > ? AND number <= (SELECT CAST(value AS INTEGER) FROM header "
        "WHERE key = 'kept') ORDER BY number LIMIT 1",
        [&](std::string_view block) { return readRows(block, take); });
}

void RecordReader::forEachRemark(const std::function<bool(const RecordRemark&)>& take) const {
    impl_->forEachBlock("SELECT number, data FROM remark WHERE number > ? ORDER BY number LIMIT 1",
                        [&](std::string_view block) { return readRemarks(block, impl_->remarksHaveLengths, take); });
}

void RecordReader::forEachKey(const std::function<bool(std::string_view)>& take) const {
    impl_->forEachBlock("SELECT number, data FROM keys WHERE number > ? ORDER BY number LIMIT 1",
                        [&](std::string_view block) {
                            for (BlockReader keys(block); !keys.atEnd();) {
                                if (!take(keys.text())) return false;
                            }
                            return true;
                        });
}

void RecordReader::forEachCopied(const std::function<void(std::string_view)>& take) const {
    Decompressor decompressor;
    impl_->forEachBlock("SELECT number, data FROM copy WHERE number > ? ORDER BY number LIMIT 1",
                        [&](std::string_view block) {
                            decompressor.add(block, take);
                            return true;
                        });
}

std::optional<RecordPlace> RecordReader::place(std::int64_t record) const {
    SqliteStatement query(impl_->connection, "SELECT data FROM block WHERE ? BETWEEN first AND last ORDER BY number");
    query.bind(1, record);
    std::optional<RecordPlace> found;
    while (!found && query.step()) {
        readPlaces(query.bytes(0), [&](const RecordPlace& place) {
            if (place.record == record) found = place;
            return !found;
        });
    }
    if (found) return found;
    forEachRemark([&](const RecordRemark& remark) {
        if (remark.record == record && remark.offset >= 0 && remark.length >= 0)
            found = RecordPlace{.record = record, .offset = remark.offset, .length = remark.length};
        return !found;
    });
    return found;
}

}  // namespace kolmera
