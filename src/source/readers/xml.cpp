#include <algorithm>
#include <deque>

#include "platform/error.h"
#include "platform/spreadsheet/xmlpart.h"
#include "source/readers/readers.h"

namespace kolmera {
namespace {

constexpr std::size_t kLongestPath = 64'000;
constexpr std::string_view kBlanks = " \t\r\n";

std::string_view withoutBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// The fields of an element that repeats. A field that stands in a record several times has its values behind each
/// other, with ", " between.
class RecordFields final : public XmlHandler {
  public:
    RecordFields(const SourceFormat& format, const SourceLimits& limits)
        : record_("/" + format.record), fields_(format.fields), mostBytes_(limits.rowBytes), values_(fields_.size()) {}

    std::function<void()> recordEnded;
    std::uint64_t number = 0;
    [[nodiscard]] const std::vector<std::string>& values() const { return values_; }

    void start(std::string_view name, const XmlAttributes& attributes) override {
        marks_.push_back(path_.size());
        path_.append("/").append(name);
        if (path_.size() > kLongestPath) throw PlatformError(errors::kUnreadableXml, "a name is too long").quoted();
        if (recordDepth_ == 0 && path_.ends_with(record_)) {
            recordDepth_ = marks_.size();
            recordPath_ = path_.size();
            ++number;
            bytes_ = 0;
            for (std::string& value : values_) value.clear();
        }
        if (recordDepth_ == 0) return;
        texts_.emplace_back();
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            const std::size_t at = fields_[i].rfind('@');
            if (at == std::string::npos || !isHere(std::string_view(fields_[i]).substr(0, at))) continue;
            add(i, attributes[std::string_view(fields_[i]).substr(at + 1)]);
        }
    }

    void end(std::string_view /*name*/) override {
        if (recordDepth_ != 0) {
            const std::string_view text = withoutBlanks(texts_.back());
            for (std::size_t i = 0; i < fields_.size() && !text.empty(); ++i) {
                if (isHere(fields_[i])) add(i, text);
            }
            texts_.pop_back();
        }
        const bool isRecord = recordDepth_ == marks_.size();
        path_.resize(marks_.back());
        marks_.pop_back();
        if (!isRecord) return;
        recordDepth_ = 0;
        recordEnded();
    }

    void text(std::string_view piece) override {
        if (recordDepth_ == 0) return;
        count(piece.size());
        texts_.back() += piece;
    }

  private:
    /// Whether a path, counted from the record, is that of the present element. "." is the record.
    [[nodiscard]] bool isHere(std::string_view field) const {
        const std::string_view here = std::string_view(path_).substr(recordPath_);
        if (field.ends_with('/')) field.remove_suffix(1);
        if (field.empty() || field == ".") return here.empty();
        return here.size() == field.size() + 1 && here.substr(1) == field;
    }

    void add(std::size_t field, std::string_view value) {
        if (value.empty()) return;
        count(value.size());
        if (!values_[field].empty()) values_[field] += ", ";
        values_[field] += value;
    }

    void count(std::size_t bytes) {
        bytes_ += bytes;
        if (bytes_ <= mostBytes_) return;
        throw PlatformError(errors::kRowTooLong, "a record is too long").about(std::to_string(number));
    }

    std::string record_;
    std::vector<std::string> fields_;
    std::size_t mostBytes_;
    std::vector<std::string> values_;
    std::string path_;                ///< "/Catalog/Article/Price"
    std::vector<std::size_t> marks_;  ///< where the last name of the path begins, of each element that is open
    std::size_t recordDepth_ = 0;     ///< 0: outside
    std::size_t recordPath_ = 0;      ///< length of the record's path
    std::vector<std::string> texts_;  ///< of the elements in the record that are open
    std::size_t bytes_ = 0;
};

class XmlRecords final : public RowReader {
  public:
    XmlRecords(std::unique_ptr<ByteStream> stream, const SourceFormat& format, const SourceLimits& limits)
        : names_(format.fields),
          fields_(format, limits),
          xml_(std::move(stream), fields_, refusal, XmlReader::DocumentType::WithoutEntities) {
        fields_.recordEnded = [this] { xml_.pause(); };
        if (names_.size() > limits.columns) throw PlatformError(errors::kTooManyColumns, "fields").about("0");
    }

    bool next(Row& row) override {
        if (namesGiven_ && !xml_.readOn()) return false;
        row.number = namesGiven_ ? fields_.number : 0;
        row.cells.clear();
        for (const std::string& value : namesGiven_ ? fields_.values() : names_)
            row.cells.push_back({value, Cell::Kind::Text});
        namesGiven_ = true;
        return true;
    }
    [[nodiscard]] double progress() const override { return xml_.progress(); }
    [[nodiscard]] SourceRemarks remarks() const override { return {}; }

  private:
    static PlatformError refusal(const std::string& reason) {
        return PlatformError(errors::kUnreadableXml, reason).quoted();
    }

    std::vector<std::string> names_;
    RecordFields fields_;
    XmlReader xml_;
    bool namesGiven_ = false;
};

}  // namespace

std::unique_ptr<RowReader> readXml(SourceFile file, const SourceFormat& format, const SourceLimits& limits) {
    return std::make_unique<XmlRecords>(std::move(file).stream(), format, limits);
}

}  // namespace kolmera
