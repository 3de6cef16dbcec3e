#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "definitions/jobfile.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"
#include "platform/paths.h"

namespace kolmera {

/// One row of the job list: the job and the texts of its columns.
struct JobRow {
    Job job;
    bool tradeFormat = false;  ///< by the kind letter: second icon, text 14 instead of 15
    std::string kindText;
    std::string fileState;  ///< date of the price file, or that it is missing, on a removable drive or on a CD

    bool operator==(const JobRow&) const = default;
};

/// What the file state of a row is found with.
struct JobListSurroundings {
    const DriveMap& drives;
    std::filesystem::path dataFolder;
    std::filesystem::path programFolder;
    const Locale& locale;
};

/// The rows of the job list in file order.
std::vector<JobRow> jobRows(LanguageTexts& texts, const JobListSurroundings& surroundings);

}  // namespace kolmera
