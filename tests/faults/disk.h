#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "faults/systemcalls.h"

namespace kolmera::test {

/// What a disk surely holds of a folder while calls change it: what was there before, the bytes of a file that was
/// synced behind them, and a name once its folder was synced. Everything else may be there or not when the power goes.
class Disk {
  public:
    explicit Disk(const std::filesystem::path& folder);

    void apply(const RecordedCall& call);

    /// The folder after a loss of power: nothing is left of what was not synced or, with a source of chance, some of
    /// it: sectors of files in any order, names in the order of their changes.
    void writeTo(const std::filesystem::path& folder, std::mt19937* chance = nullptr) const;
    /// Tells apart what `writeTo` without chance would write.
    [[nodiscard]] std::size_t hash() const;

  private:
    struct Write {
        std::size_t offset = 0;
        std::string bytes;
    };
    struct File {
        std::string now, kept;
        std::vector<Write> unsynced;
    };
    using Names = std::map<std::string, std::shared_ptr<File>>;
    struct NameChange {
        std::string folder, from, to;
        std::shared_ptr<File> file;  ///< that gets the name `to`
    };

    static void carryOut(const NameChange& change, Names& names);
    static std::string afterLoss(const File& file, std::mt19937* chance);
    void change(NameChange change);

    std::vector<std::string> folders_;
    Names now_, kept_;
    std::vector<NameChange> unsynced_;
    std::map<std::uint64_t, std::shared_ptr<File>> files_;
};

}  // namespace kolmera::test
