#include "import/run/runpace.h"

#include <fmt/format.h>

#include <algorithm>

#include "history/changetable.h"
#include "lang/keys/pace.h"

namespace kolmera {
namespace {

constexpr double kMillisecondsPerSecond = 1000;
/// What is told earlier jumps about.
constexpr RunPace::Time kSteady{2000};

std::string timeText(LanguageTexts& texts, std::int64_t seconds) {
    constexpr std::int64_t kMinute = 60, kHour = 3600;
    const auto with = [&](ModuleKey key, std::int64_t number) {
        return texts.ModulTextMed(key, std::to_string(number));
    };
    if (seconds >= kHour)
        return with(text::pace::kHours, seconds / kHour) + " " + with(text::pace::kMinutes, seconds % kHour / kMinute);
    if (seconds < kMinute) return with(text::pace::kSeconds, seconds);
    // Of what takes minutes, seconds are told in tens: they would be wrong otherwise.
    constexpr std::int64_t kTen = 10;
    return with(text::pace::kMinutes, seconds / kMinute) + " " +
           with(text::pace::kSeconds, seconds % kMinute / kTen * kTen);
}

}  // namespace

void RunPace::at(std::uint64_t position, std::uint64_t size, std::int64_t records, Time now) {
    const bool otherStep = size != size_ || position < position_ || (records < 0) != (records_ < 0);
    if (otherStep) {
        firstPosition_ = position;
        firstRecords_ = records;
        began_ = now;
    }
    position_ = position;
    size_ = size;
    records_ = records;
    now_ = now;
}

double RunPace::done() const {
    if (size_ == 0) return 0;
    return static_cast<double>(std::min(position_, size_)) / static_cast<double>(size_);
}

std::string RunPace::text(LanguageTexts& texts, const Locale& locale) const {
    constexpr int kWhole = 100;
    std::string text = fmt::format("{} %", static_cast<int>(done() * kWhole));
    if (elapsed() < kSteady) return text;
    const double seconds = static_cast<double>(elapsed().count()) / kMillisecondsPerSecond;
    if (records_ > firstRecords_) {
        const auto rate = static_cast<std::int64_t>(static_cast<double>(records_ - firstRecords_) / seconds);
        if (rate > 0) text.append(", ").append(texts.ModulTextMed(text::pace::kRate, grouped(rate, locale)));
    }
    const std::uint64_t read = position_ - firstPosition_;
    if (read > 0 && position_ < size_) {
        const double left = seconds * static_cast<double>(size_ - position_) / static_cast<double>(read);
        const auto whole = static_cast<std::int64_t>(left) + 1;
        text.append(", ").append(texts.ModulTextMed(text::pace::kLeft, timeText(texts, whole)));
    }
    return text;
}

}  // namespace kolmera
