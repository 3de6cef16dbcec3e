#include "platform/spreadsheet/sharedstrings.h"

#include "platform/bytestream.h"
#include "platform/error.h"
#include "platform/spreadsheet/celltext.h"
#include "platform/spreadsheet/richtext.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostTextBytes = std::size_t{2} << 30;
constexpr std::size_t kMostTexts = std::size_t{1} << 25;
constexpr std::uint64_t kMostPartBytes = std::uint64_t{4} << 30;
constexpr std::size_t kInMemory = std::size_t{32} << 20;
constexpr std::size_t kPiece = std::size_t{1} << 20;

class SharedStringsPart final : public XmlHandler {
  public:
    explicit SharedStringsPart(SharedStrings& strings) : strings_(strings) {}

    void start(std::string_view name, const XmlAttributes&) override {
        if (name == "si") text_.clear();
        text_.start(name);
    }
    void end(std::string_view name) override {
        text_.end(name);
        if (name == "si") strings_.add(unescapedCellText(text_.text()));
    }
    void text(std::string_view piece) override { text_.add(piece); }

  private:
    SharedStrings& strings_;
    RichText text_;
};

}  // namespace

SharedStrings SharedStrings::of(const Archive& archive, const std::string& part) {
    SharedStrings strings;
    if (part.empty()) return strings;
    SharedStringsPart handler(strings);
    readXmlPart(archive, part, kMostPartBytes, handler);
    return strings;
}

void SharedStrings::add(std::string_view text) {
    const std::size_t end = stored_ + texts_.size() + text.size();
    if (end > kMostTextBytes || ends_.size() == kMostTexts) {
        throw PlatformError(errors::kUnreadableSpreadsheet, "The workbook has too many texts.");
    }
    texts_ += text;
    ends_.push_back(static_cast<std::uint32_t>(end));
    if (texts_.size() < (file_.isOpen() ? kPiece : kInMemory)) return;
    if (!file_.isOpen()) file_ = namelessFile();
    file_.write(texts_);
    stored_ += texts_.size();
    texts_.clear();
    texts_.shrink_to_fit();
}

std::optional<std::string_view> SharedStrings::text(std::size_t number) const {
    if (number >= ends_.size()) return std::nullopt;
    const std::size_t begin = number == 0 ? 0 : ends_[number - 1];
    const std::size_t length = ends_[number] - begin;
    if (begin >= stored_) return std::string_view(texts_).substr(begin - stored_, length);
    read_.resize(length);
    file_.readAt(begin, read_.data(), length);
    return read_;
}

}  // namespace kolmera
