#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/engine/database.h"
#include "platform/engine/sqlite/filetable.h"

namespace kolmera {

/// A company file.
class FileDatabase final : public Database {
  public:
    FileDatabase(const std::filesystem::path& file, const OpenOptions& options);
    /// A new file of this program alone, which `fill` fills.
    FileDatabase(const std::filesystem::path& file, const Locale& locale,
                 const std::function<void(SqliteConnection&)>& fill);

    /// See `openPrivateCopy`.
    std::unique_ptr<Database> privateCopy(const std::filesystem::path& copy, const std::function<bool()>& goOn);

    [[nodiscard]] const TableDef& table(std::string_view name) override { return fileTable(name).definition(); }
    [[nodiscard]] std::vector<std::string> tableNames() override;
    std::unique_ptr<Recordset> open(std::string_view source, RecordsetType type, std::int32_t options) override;
    std::int64_t execute(std::string_view statement, std::span<const Value> parameters, std::int32_t options) override;
    void insertRows(std::string_view table, std::span<const int> columns,
                    std::span<const std::vector<Value>> rows) override;
    void listen(ChangeListener* listener) override;

    void begin() override;
    bool beginWhole() override;
    void commit() override;
    void commitJoined() override;
    void rollback() override { session_.transactions.rollback(); }
    [[nodiscard]] bool inTransaction() const override { return session_.transactions.open(); }
    void settle() override { session_.transactions.settle(); }
    [[nodiscard]] std::uint64_t stamp(std::string_view table) override;

  private:
    FileTable& fileTable(std::string_view name);
    FileTable* findTable(std::string_view name);
    std::optional<std::string> exactName(std::string_view name);
    std::string translate(std::string_view statement);
    void flushAll();
    void checkEnds();

    std::unique_ptr<Recordset> openTable(FileTable& table, std::string_view source, RecordsetType type, bool readOnly);
    std::unique_ptr<Recordset> openKeyset(FileTable& table, std::string_view source,
                                          const std::vector<std::string>& columns, const std::string& rest,
                                          bool readOnly);
    std::unique_ptr<Recordset> openInMemory(std::string_view source, const std::string& statement, RecordsetType type);
    FieldDef fieldOf(const SqliteStatement& statement, int column);
    SqliteStatement& actionStatement(std::string_view text);

    FileSession session_;
    std::vector<std::string> names_;
    std::vector<std::unique_ptr<FileTable>> tables_;
    std::vector<std::pair<std::string, SqliteStatement>> actions_;  ///< by the text that was given, the last used last
};

/// Throws kFileNotFound where there is no such file.
void requireFile(const std::filesystem::path& file);

}  // namespace kolmera
