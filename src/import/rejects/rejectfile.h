#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "history/recordreader.h"
#include "lang/languagetexts.h"

namespace kolmera {

/// What became of a file of rejected records.
struct Rejects {
    enum class Outcome {
        Written,
        None,       ///< no record has to be corrected: there is no file now
        NoFile,     ///< the price file is gone, or no file that can be read again, and the record has no copy
        Changed,    ///< the price file is not the one that the run read
        PriceFile,  ///< it would have been written over the price file
        Cancelled,
    };
    Outcome outcome{};
    std::int64_t records = 0;  ///< without the headers and articles that they go by

    [[nodiscard]] bool good() const { return outcome == Outcome::Written || outcome == Outcome::None; }
};

/// Whether a run has rejected records of its price file: passed them over, or taken them with 0 for what is no number.
/// What the job leaves out by its product groups is no reject.
bool hasRejects(const RecordReader& run);

/// Whether the rejects cannot go there, because it is the price file.
bool isPriceFile(const std::filesystem::path& target, const std::filesystem::path& priceFile);

/// Writes the rejected records to a file that runs as the price file did when they have been corrected: byte for byte,
/// in their order, each behind the header and the article that it goes by; of a price file that was converted, its own
/// rows (see `writeSourceRejects`). The file takes its place whole; without rejects there is none, and an older one of
/// that name is removed. `goesOn` is asked now and then. Throws
/// PlatformError.
Rejects writeRejects(const RecordReader& run, const std::filesystem::path& target,
                     const std::function<bool()>& goesOn = {});

/// What to tell the user of it.
std::string rejectsText(LanguageTexts& texts, const Rejects& rejects, const RecordReader& run,
                        const std::filesystem::path& target);

}  // namespace kolmera
