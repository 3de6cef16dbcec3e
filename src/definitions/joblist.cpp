#include "definitions/joblist.h"

#include <sys/stat.h>

#include <ctime>

#include "definitions/pricefilepath.h"
#include "lang/keys/prismain.h"

namespace kolmera {
namespace {

struct RowTexts {
    std::string missing, removable, cd, tradeFormat, mask;
};

// The day on which the file was changed last, in the user's time zone. A folder is no price file.
std::optional<Date> dayOfChange(const std::filesystem::path& file) {
    struct stat status {};
    if (stat(file.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return std::nullopt;
    std::tm local{};
    if (localtime_r(&status.st_mtime, &local) == nullptr) return std::nullopt;
    return Date::fromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
}

std::string fileState(const std::string& path, const RowTexts& texts, const JobListSurroundings& surroundings) {
    if (path.empty()) return texts.missing;
    if (path.size() > 1 && path[1] == ':') {
        const DriveKind kind = surroundings.drives.kind(path.substr(0, 2));
        if (kind == DriveKind::Removable) return texts.removable;
        if (kind == DriveKind::Cd) return texts.cd;
    }
    const auto file = findPriceFile(path, surroundings.drives, surroundings.dataFolder, surroundings.programFolder);
    const auto day = dayOfChange(file);
    return day ? surroundings.locale.formatDate(*day) : texts.missing;
}

}  // namespace

std::vector<JobRow> jobRows(LanguageTexts& texts, const JobListSurroundings& surroundings) {
    const RowTexts rowTexts{.missing = texts.FormulärSträng(text::prismain::kFileMissing),
                            .removable = texts.FormulärSträng(text::prismain::kRemovable),
                            .cd = texts.FormulärSträng(text::prismain::kCd),
                            .tradeFormat = texts.FormulärSträng(text::prismain::kTradeFormat),
                            .mask = texts.FormulärSträng(text::prismain::kMask)};
    std::vector<JobRow> rows;
    for (Job& job : JobFile(surroundings.dataFolder).all()) {
        JobRow row;
        row.tradeFormat = job.kind == "E" || job.kind == "R" || job.kind == "F";
        row.kindText = row.tradeFormat ? rowTexts.tradeFormat : rowTexts.mask;
        row.fileState = fileState(job.priceFile, rowTexts, surroundings);
        row.job = std::move(job);
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace kolmera
