#include "import/rejects/pricerecords.h"

#include "import/tradeformats/eiorsk.h"
#include "platform/error.h"

namespace kolmera {

PriceRecords::PriceRecords(PriceFile& file, const RunDefinition& definition) : file_(file) {
    if (ÄrStandardFormat(definition.job.name)) {
        format_ = definition.job.name;
        return;
    }
    if (definition.mask) mask_ = LoadedMask(definition.mask->mask, definition.mask->relations);
    if (mask_.emptyRecords()) throw PlatformError(errors::kDamaged, "the record of the run has no mask");
    reader_.emplace(file_, mask_);
}

bool PriceRecords::next() {
    if (file_.atEnd()) return false;
    ++place_.record;
    place_.offset = static_cast<std::int64_t>(file_.position());
    if (reader_) {
        (void)reader_->next();
    } else {
        readLine();
    }
    place_.length = static_cast<std::int64_t>(file_.position()) - place_.offset;
    return true;
}

void PriceRecords::readLine() {
    const std::string_view line = file_.line();
    const int type = recordType(line);
    says_ = Says::Nothing;
    if (type == 0 && format_ == "(RSK)") says_ = Says::Header;
    if (type == 1 && format_ != "(FINFO)") says_ = Says::Article;
}

}  // namespace kolmera
