#include "setup/newfolder.h"

#include <functional>
#include <system_error>
#include <vector>

#include "definitions/datafolder.h"
#include "platform/error.h"
#include "platform/privatefolder.h"
#include "setup/democompany.h"
#include "startup/newcompany.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

/// A folder that is filled out of sight: beside the wanted folder, or inside it when that is there already (it may have
/// rights of its own). What is unfinished is removed.
class FolderInTheMaking {
  public:
    explicit FolderInTheMaking(const fs::path& wanted)
        : wanted_(wanted.has_filename() ? wanted : wanted.parent_path()),
          exists_(fs::exists(wanted)),
          private_(madePlace(exists_ ? wanted_ : wanted_.parent_path()), ".kolmera") {
        fs::create_directory(folder());  // with the rights that the user gives to new folders
    }

    [[nodiscard]] fs::path folder() const { return private_.path() / "folder"; }
    void finish() {
        if (!exists_) return fs::rename(folder(), wanted_);
        const std::vector<fs::path> entries(fs::directory_iterator(folder()), {});
        for (const fs::path& entry : entries) fs::rename(entry, wanted_ / entry.filename());
    }

  private:
    static fs::path madePlace(const fs::path& place) {
        fs::create_directories(place);
        return place;
    }

    fs::path wanted_;
    bool exists_;
    PrivateFolder private_;
};

void makeFolder(const fs::path& folder, const std::function<void(const fs::path& made)>& fill) {
    if (!mayBecomeDataFolder(folder))
        throw PlatformError(errors::kDuplicateKey, "the folder is not empty").about(folder.string());
    try {
        FolderInTheMaking making(folder);
        createDataFolder(making.folder());
        fill(making.folder());
        making.finish();
    } catch (const fs::filesystem_error& error) {
        throw PlatformError(errors::kInternal, error.code().message()).ofSystem(error.code().value());
    }
}

}  // namespace

bool mayBecomeDataFolder(const fs::path& folder) {
    std::error_code ignored;
    return !fs::exists(folder, ignored) || (fs::is_directory(folder, ignored) && fs::is_empty(folder, ignored));
}

void makeNewFolder(const fs::path& folder, const std::string& companyName) {
    makeFolder(folder,
               [&](const fs::path& made) { createCompany(made, kFirstCompany, companyName, {}, FirstRows::Filled); });
}

void makeDemoFolder(const fs::path& folder, const std::string& companyName, const fs::path& demoFiles,
                    const Locale& locale) {
    makeFolder(folder, [&](const fs::path& made) {
        createCompany(made, kFirstCompany, companyName);
        fillDemoCompany(demoFiles, made, made / kFirstCompany, locale);
    });
}

}  // namespace kolmera
