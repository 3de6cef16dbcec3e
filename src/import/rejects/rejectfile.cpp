#include "import/rejects/rejectfile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "import/rejects/pricerecords.h"
#include "import/rejects/sourcerejects.h"
#include "import/run/recordedrun.h"
#include "import/run/runreport.h"
#include "lang/keys/rejects.h"
#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/outputfile.h"
#include "platform/privatefile.h"
#include "platform/sha256.h"
#include "platform/workplaces.h"
#include "source/readers/opensource.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

using Numbers = std::vector<std::int64_t>;

/// Remarks about other files than the price file have no place.
bool rejects(const RecordRemark& remark) {
    const auto isItself = [&](const RemarkKind& row) { return row.ofSource && row.name == remark.kind; };
    const bool ofPriceFile = remark.offset >= 0 || std::ranges::any_of(kRemarks, isItself);
    return remark.record > 0 && ofPriceFile && rejectsRecord(remark.kind);
}

/// The rejected records by number.
Numbers rejectedRecords(const RecordReader& run) {
    Numbers numbers;
    run.forEachRemark([&](const RecordRemark& remark) {
        const bool again = !numbers.empty() && numbers.back() == remark.record;
        if (!again && rejects(remark)) numbers.push_back(remark.record);
        return true;
    });
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

/// The record's copy of the price file, in a file without a name.
Descriptor unpacked(const RecordReader& run, const fs::path& beside) {
    const PrivateFile file(beside, ".copy");
    run.forEachCopied([&](std::string_view bytes) { file.descriptor().write(bytes); });
    return Descriptor(file.path(), O_RDONLY);
}

/// The price file, where it is one that can be read again.
Descriptor opened(const fs::path& file) {
    try {
        Descriptor descriptor(file, O_RDONLY | O_NONBLOCK);
        struct stat found {};
        if (fstat(descriptor.get(), &found) == 0 && S_ISREG(found.st_mode)) return descriptor;
    } catch (const PlatformError&) {
        // Why it cannot be opened does not matter: it cannot be read as the run read it.
    }
    return {};
}

Descriptor sameFile(const Descriptor& file) { return Descriptor(fcntl(file.get(), F_DUPFD_CLOEXEC, 0)); }

bool isBlank(std::string_view record) {
    return record.find_first_not_of(std::string_view(" \t\r\n\0\x1A", 6)) == std::string_view::npos;
}

/// One going through the price file.
class Rejecting {
  public:
    Rejecting(const RecordReader& run, const RunDefinition& definition, const Descriptor& file, OutputFile& output)
        : run_(run), bytes_(file), file_(sameFile(file)), records_(file_, definition), output_(output) {
        if (!run.header().priceFile.sha256.empty()) file_.tell([this](std::string_view bytes) { digest_.add(bytes); });
    }

    /// Nothing when `goesOn` says so.
    std::optional<std::int64_t> write(const Numbers& rejected, const std::function<bool()>& goesOn) {
        constexpr std::int64_t kAsk = 1000;
        const bool toTheEnd = !run_.header().priceFile.sha256.empty();
        auto next = rejected.begin();
        while ((toTheEnd || next != rejected.end()) && records_.next()) {
            const RecordPlace place = records_.place();
            if (place.record % kAsk == 0 && goesOn && !goesOn()) return std::nullopt;
            said_[static_cast<std::size_t>(records_.says())] = {place, false};
            if (next == rejected.end() || *next != place.record) continue;
            ++next;
            reject(place);
        }
        return written_;
    }
    /// What was read is what the run read.
    [[nodiscard]] bool isSame() {
        const RecordedFile& file = run_.header().priceFile;
        return file.sha256.empty() || digest_.hexadecimal() == file.sha256;
    }

  private:
    struct Said {
        RecordPlace place;
        bool written = true;
    };

    void reject(const RecordPlace& place) {
        if (place.length <= static_cast<std::int64_t>(piece_.size()) && isBlank(read(place.offset, place.length)))
            return;
        Said* header = &said_[static_cast<std::size_t>(PriceRecords::Says::Header)];
        Said* article = &said_[static_cast<std::size_t>(PriceRecords::Says::Article)];
        if (article->place.offset < header->place.offset) std::swap(header, article);
        for (Said* said : {header, article}) {
            if (!std::exchange(said->written, true) && said->place.record != place.record) copy(said->place);
        }
        copy(withoutEndMark(place));
        ++written_;
    }

    /// The mark at the end of the file counts as read, but is no part of the last record.
    RecordPlace withoutEndMark(RecordPlace place) {
        const std::int64_t end = place.offset + place.length;
        if (place.length > 0 && end == static_cast<std::int64_t>(bytes_.size()) && read(end - 1, 1) == "\x1A")
            --place.length;
        return place;
    }

    void copy(const RecordPlace& place) {
        const auto most = static_cast<std::int64_t>(piece_.size());
        for (std::int64_t done = 0; done < place.length; done += most) {
            output_.write(read(place.offset + done, std::min(place.length - done, most)));
        }
    }

    std::string_view read(std::int64_t offset, std::int64_t length) {
        const std::size_t got =
            bytes_.readAt(static_cast<std::size_t>(offset), piece_.data(), static_cast<std::size_t>(length));
        return {piece_.data(), got};
    }

    const RecordReader& run_;
    const Descriptor& bytes_;
    PriceFile file_;
    PriceRecords records_;
    OutputFile& output_;
    Sha256 digest_;
    std::array<Said, PriceRecords::kSayings> said_;
    std::array<char, 65536> piece_{};
    std::int64_t written_ = 0;
};

std::string digestOf(const Descriptor& file) {
    Sha256 digest;
    std::array<char, 65536> piece;
    for (std::size_t at = 0;;) {
        const std::size_t count = file.readAt(at, piece.data(), piece.size());
        if (count == 0) return digest.hexadecimal();
        digest.add({piece.data(), count});
        at += count;
    }
}

/// Of a workbook or XML another file is written than the user may expect.
bool isAnotherText(const RecordReader& run) {
    const auto definition = definitionOf(run.header().definition);
    return definition && definition->source && !isText(definition->source->format.kind);
}

void removeOlder(const fs::path& target) {
    std::error_code failed;
    if (fs::is_regular_file(fs::symlink_status(target, failed))) fs::remove(target, failed);
    if (failed && failed != std::errc::no_such_file_or_directory) throwSystemError(failed.value());
}

}  // namespace

bool hasRejects(const RecordReader& run) {
    bool found = false;
    run.forEachRemark([&](const RecordRemark& remark) { return !(found = rejects(remark)); });
    return found;
}

bool isPriceFile(const fs::path& target, const fs::path& priceFile) {
    std::error_code missing;
    return fs::equivalent(target, priceFile, missing) ||
           fs::absolute(target).lexically_normal() == priceFile.lexically_normal();
}

Rejects writeRejects(const RecordReader& run, const fs::path& target, const std::function<bool()>& goesOn) {
    using Outcome = Rejects::Outcome;
    const RecordedFile& recorded = run.header().priceFile;
    if (isPriceFile(target, recorded.path)) return {.outcome = Outcome::PriceFile};
    const Numbers rejected = rejectedRecords(run);
    if (rejected.empty()) {
        removeOlder(target);
        return {.outcome = Outcome::None};
    }
    const auto definition = definitionOf(run.header().definition);
    if (!definition) throw PlatformError(errors::kDamaged, "the record of the run has no definition");
    const Descriptor file = recorded.copied ? unpacked(run, target) : opened(recorded.path);
    if (!file.isOpen()) return {.outcome = Outcome::NoFile};
    const bool unread = recorded.sha256.empty() && !recorded.copied;  // to its end: only its time tells
    if (unread && timeText(recorded.path) != recorded.modified) return {.outcome = Outcome::Changed};
    OutputFile output(target);
    bool isSame = true;
    std::optional<std::int64_t> written;
    if (definition->source) {
        isSame = recorded.sha256.empty() || digestOf(file) == recorded.sha256;
        const auto places = workPlaces(target.parent_path());
        if (isSame) written = writeSourceRejects(file, *definition, rejected, places, output, goesOn);
    } else {
        Rejecting rejecting(run, *definition, file, output);
        written = rejecting.write(rejected, goesOn);
        isSame = !written || rejecting.isSame();
    }
    if (!isSame) return {.outcome = Outcome::Changed};
    if (!written) return {.outcome = Outcome::Cancelled};
    if (*written == 0) {
        removeOlder(target);
        return {.outcome = Outcome::None};
    }
    output.finish();
    return {.outcome = Outcome::Written, .records = *written};
}

std::string rejectsText(LanguageTexts& texts, const Rejects& rejects, const RecordReader& run, const fs::path& target) {
    const std::string& priceFile = run.header().priceFile.path;
    switch (rejects.outcome) {
        case Rejects::Outcome::Written:
            return texts.ModulTextMed(text::rejects::kWritten, target.string()) + fmt::format(" {}", rejects.records) +
                   (isAnotherText(run) ? ". " + texts.ModulText(text::rejects::kAsText) : std::string());
        case Rejects::Outcome::None:
            return texts.ModulTextMed(text::rejects::kNone, target.string());
        case Rejects::Outcome::NoFile:
            return texts.ModulTextMed(text::rejects::kNoPriceFile, priceFile);
        case Rejects::Outcome::Changed:
            return texts.ModulTextMed(text::rejects::kPriceFileChanged, priceFile);
        case Rejects::Outcome::PriceFile:
            return texts.ModulTextMed(text::rejects::kIsPriceFile, priceFile);
        case Rejects::Outcome::Cancelled:
            break;
    }
    return texts.ModulText(text::rejects::kCancelled);
}

}  // namespace kolmera
