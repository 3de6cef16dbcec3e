#include "source/detection/recordlength.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "platform/encodings.h"

namespace kolmera {
namespace {

constexpr std::size_t kShortest = 8, kLongest = 2000;
constexpr std::size_t kLooked = 24'000;  // characters
constexpr std::size_t kFewestRecords = 3;

enum Class : std::uint8_t { Blank, Digit, Letter, Sign, LineEnd };
constexpr std::size_t kClasses = 5;

Class classOf(char32_t character) {
    if (character == U' ' || character == U'\0') return Blank;
    if (character == U'\r' || character == U'\n') return LineEnd;
    if (character >= U'0' && character <= U'9') return Digit;
    const char32_t small = character | 0x20U;
    return (small >= U'a' && small <= U'z') || character >= 0x80 ? Letter : Sign;
}

struct Classes {
    std::vector<Class> of;  ///< of the first characters
    std::size_t all = 0;    ///< characters
};

Classes classesOf(std::string_view text) {
    Classes classes;
    for (; !text.empty(); ++classes.all) {
        const FirstCharacter first = firstCharacter(text);
        if (classes.of.size() < kLooked) classes.of.push_back(classOf(first.character.value_or(0xFFFD)));
        text.remove_prefix(first.length);
    }
    return classes;
}

/// How much oftener the same stands that far apart than it would by chance, up to 1.
class Likeness {
  public:
    explicit Likeness(const std::vector<Class>& classes) : classes_(classes) {
        std::array<double, kClasses> counts{};
        for (const Class each : classes_) ++counts.at(each);
        for (const double count : counts) byChance_ += count * count;
        byChance_ /= static_cast<double>(classes_.size() * classes_.size());
    }
    [[nodiscard]] double at(std::size_t distance) const {
        const std::size_t pairs = classes_.size() - distance;
        std::size_t same = 0;
        for (std::size_t i = 0; i < pairs; ++i) same += classes_[i] == classes_[i + distance] ? 1U : 0U;
        const double share = static_cast<double>(same) / static_cast<double>(pairs);
        return byChance_ < 1 ? (share - byChance_) / (1 - byChance_) : 0;
    }

  private:
    const std::vector<Class>& classes_;
    double byChance_ = 0;
};

}  // namespace

std::size_t repeatedLength(std::string_view text, bool isWhole) {
    constexpr double kAlike = 0.3;       // less is no repetition
    constexpr double kNearly = 0.75;     // several records together may be more alike than two neighbours
    constexpr double kDivides = 1.1;     // what the text is so many times of
    constexpr double kLeadOfAll = 1.15;  // over what is usual, so that texts of one kind of character repeat nowhere
    const Classes classes = classesOf(text);
    if (classes.of.size() < kShortest * kFewestRecords) return 0;
    const Likeness likeness(classes.of);
    const std::size_t longest = std::min(kLongest, classes.of.size() / kFewestRecords);
    std::vector<double> alike(longest + 1);
    double most = 0;
    double sum = 0;
    for (std::size_t length = kShortest; length <= longest; ++length) {
        alike[length] = likeness.at(length);
        sum += alike[length];
        // The last record may lack what parts it from the next one, or be followed by an end mark.
        const std::size_t over = isWhole ? (classes.all + 2) % length : length;
        if (over <= 3) alike[length] *= kDivides;
        most = std::max(most, alike[length]);
    }
    const double usual = sum / static_cast<double>(longest - kShortest + 1);
    if (most < kAlike || most < usual * kLeadOfAll) return 0;
    const auto best = static_cast<std::size_t>(std::ranges::max_element(alike) - alike.begin());
    for (std::size_t length = kShortest; length < best; ++length) {
        if (best % length == 0 && alike[length] >= most * kNearly) return length;
    }
    return best;
}

}  // namespace kolmera
