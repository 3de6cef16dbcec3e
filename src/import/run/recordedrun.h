#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "history/runrecord.h"
#include "import/run/recordkeeping.h"
#include "import/run/runreport.h"
#include "lang/languagetexts.h"
#include "platform/compression.h"
#include "platform/sha256.h"

namespace kolmera {

/// The record of the run at hand, where one is kept: hears of changes and remarks, and of the bytes of the price file.
/// What goes wrong with it is noted in its `RecordKeeping`, and nothing is raised.
class RecordedRun final : public RemarkListener {
  public:
    RecordedRun(RecordKeeping& keeping, LanguageTexts& texts);
    ~RecordedRun() override;

    /// Makes the record; false when there is none.
    bool begin(RunHeader header);
    /// The record cannot go on, for a reason of the caller's.
    void giveUp(const PlatformError& error);
    [[nodiscard]] ChangeListener* listener() { return record_.get(); }
    void at(const RecordPlace& place) {
        place_ = place;
        if (record_) record_->at(place);
    }
    /// Bytes of the price file, in their order.
    void read(std::string_view bytes);
    void about(std::string_view product) override {
        if (record_ && place_.record > 0) record_->key(product);  // other files have no articles
    }
    void remark(const Remarked& remarked) override;
    void failed(const Remarked& remarked, const PlatformError& error) override;
    /// How the run went, as the header has it; `whole` when all of the price file was read. Thins the older records.
    void end(const std::string& outcome, const std::string& counts, bool whole);

  private:
    void add(const Remarked& remarked, std::string_view kind, const std::string& reason);

    RecordKeeping& keeping_;
    LanguageTexts& texts_;
    std::unique_ptr<RunRecord> record_;
    Sha256 digest_;
    std::unique_ptr<Compressor> copy_;  ///< where the price file is copied
    std::int64_t bytesRead_ = 0;
    RecordPlace place_;
};

/// The time of now, or of a file, as a header has it: "2026-11-23T08:15:00". Empty when it is not known.
std::string timeText();
std::string timeText(const std::filesystem::path& file);

}  // namespace kolmera
