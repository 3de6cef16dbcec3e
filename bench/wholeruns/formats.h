#pragma once

#include <optional>
#include <string_view>

namespace kolmera::bench {

/// The price-file formats that are measured: masks of the three structures and the trade formats.
enum class Format { Tab, Lines, Fixed, Eio, Rsk, Finfo };

struct FormatName {
    std::string_view name;  ///< on the command line
    std::string_view job;   ///< the job in the data folder that reads it
    Format format;
};

inline constexpr FormatName kFormats[] = {{"T", "Tabbfil", Format::Tab},   {"F", "Radfil", Format::Lines},
                                          {"P", "Postfil", Format::Fixed}, {"EIO", "(EIO)", Format::Eio},
                                          {"RSK", "(RSK)", Format::Rsk},   {"FINFO", "(FINFO)", Format::Finfo}};

inline std::optional<FormatName> formatNamed(std::string_view name) {
    for (const FormatName& candidate : kFormats) {
        if (candidate.name == name) return candidate;
    }
    return std::nullopt;
}

// What a case's data folder holds, known to the maker of the data and to the hand-written loaders.
inline constexpr const char* kCompanyFile = "FTG1.mdb";
inline constexpr const char* kPriceFile = "prices.txt";
inline constexpr const char* kGroupFile = "RKOD.DAT";

inline constexpr std::string_view kSupplier = "1001";        ///< of the mask jobs, and the trade formats' main supplier
inline constexpr std::string_view kSupplierCode = "AA";      ///< its code in trade files
inline constexpr std::string_view kSecondSupplier = "1002";  ///< prices in the price list only
inline constexpr std::string_view kSecondCode = "BB";

inline constexpr int kEanHeading = 1;
inline constexpr int kMicronicHeading = 2;

inline constexpr std::string_view kLowestGroup = "1000000";  ///< FINFO: the range of product groups that is read
inline constexpr std::string_view kHighestGroup = "9499999";

// Layout of the mask files.
inline constexpr int kTabColumns = 8;
inline constexpr int kRecordLines = 4;
inline constexpr int kRecordLength = 72;

}  // namespace kolmera::bench
