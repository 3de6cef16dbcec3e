#include "import/run/runreport.h"

#include <algorithm>

#include "platform/printable.h"

namespace kolmera {
namespace {

constexpr std::size_t kMostExamples = 20;
constexpr std::size_t kMostFailures = 100;
constexpr std::size_t kMostCodes = 100;
constexpr std::size_t kTextCharacters = 60;

consteval bool inOrder() {
    for (std::size_t row = 0; row < std::size(kRemarks); ++row) {
        if (static_cast<std::size_t>(kRemarks[row].remark) != row) return false;
    }
    return true;
}
static_assert(inOrder());

}  // namespace

bool rejectsRecord(std::string_view kind) {
    return kind == kFailedStatement ||
           std::ranges::any_of(kRemarks, [&](const RemarkKind& row) { return row.rejects && row.name == kind; });
}

void RunReport::remark(Remark remark, std::string_view column, std::string_view text) {
    const auto row = static_cast<std::size_t>(remark);
    if (listener_ != nullptr)
        listener_->remark(
            {.kind = kRemarks[row].name, .record = record_, .product = product_, .column = column, .text = text});
    Tally& tally = tallies_[row];
    if (++tally.count > static_cast<std::int64_t>(kMostExamples)) return;
    tally.examples.push_back({.record = record_,
                              .product = printable(product_, kTextCharacters),
                              .column = std::string(column),
                              .text = printable(text, kTextCharacters)});
}

void RunReport::zero(Remark remark, int source, std::string_view column, std::string_view text) {
    if (zerosOf_ != record_) zeroSources_.clear();
    zerosOf_ = record_;
    if (source != 0) {
        if (std::ranges::find(zeroSources_, source) != zeroSources_.end()) return;
        zeroSources_.push_back(source);
    }
    this->remark(remark, column, text);
}

void RunReport::uncoupled(std::string_view code) {
    remark(Remark::UncoupledCode, {}, code);
    if (const auto known = codes_.find(code); known != codes_.end()) {
        ++known->second;
    } else if (codes_.size() < kMostCodes) {
        codes_.emplace(code, 1);
    }
}

void RunReport::note(std::string_view what, const PlatformError& error) {
    ++failedStatements_;
    if (listener_ != nullptr)
        listener_->failed(
            {.kind = kFailedStatement, .record = record_, .product = product_, .column = what, .text = {}}, error);
    ++failureLike(what, error).count;
}

RunReport::Failure& RunReport::failureLike(std::string_view what, const PlatformError& error) {
    const auto find = [&](const PlatformError& like) {
        return std::ranges::find_if(failures_, [&](const Failure& failure) {
            return failure.error.number() == like.number() && failure.statement == what &&
                   failure.error.description() == like.description();
        });
    };
    // Errors may hold values of the price file: the list must not grow with it.
    const PlatformError numberOnly(error.number(), {});
    const bool full = failures_.size() >= kMostFailures;
    auto found = find(error);
    if (full && found == failures_.end()) found = find(numberOnly);
    if (found != failures_.end()) return *found;
    return failures_.emplace_back(Failure{.statement = std::string(what),
                                          .error = full ? numberOnly : error,
                                          .record = record_,
                                          .product = printable(product_, kTextCharacters)});
}

std::int64_t RunReport::skipped() const {
    std::int64_t sum = 0;
    for (const RemarkKind& kind : kRemarks) sum += kind.skips ? count(kind.remark) : 0;
    return sum;
}

std::int64_t RunReport::failed() const {
    return failedStatements_ + count(Remark::DamagedPrice) + count(Remark::DamagedQuantity);
}

bool RunReport::hasFaults() const {
    return failed() > 0 || std::ranges::any_of(kRemarks, [this](const RemarkKind& kind) {
               return !kind.asItStands && count(kind.remark) > 0;
           });
}

}  // namespace kolmera
