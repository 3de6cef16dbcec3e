#include "source/detection/xmllook.h"

#include <algorithm>
#include <map>
#include <vector>

#include "platform/error.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {
namespace {

/// Counts the elements of a document by their path.
class PathCount final : public XmlHandler {
  public:
    struct Element {
        std::string path;
        std::size_t parent;     ///< its place in `elements`
        std::size_t count = 0;  ///< how often it stands in the document
        std::size_t most = 0;   ///< how often within one parent
        std::size_t within = 0;
        std::size_t nodes = 0;  ///< elements and attributes in it, at all depths
        bool hasText = false;
        bool hasChildren = false;
        std::vector<std::string> attributes;
    };
    std::vector<Element> elements;  ///< in the order in which they came first

    void start(std::string_view name, const XmlAttributes& attributes) override {
        const std::size_t parent = open_.empty() ? kNone : open_.back();
        const std::size_t place = placeOf(parent, name);
        Element& element = elements[place];
        ++element.count;
        element.most = std::max(element.most, ++element.within);
        if (parent != kNone) elements[parent].hasChildren = true;
        std::size_t nodes = 1;
        attributes.forEach([&](std::string_view attribute) {
            ++nodes;
            if (element.attributes.size() < kMostAttributes &&
                std::ranges::find(element.attributes, attribute) == element.attributes.end())
                element.attributes.emplace_back(attribute);
        });
        for (const std::size_t above : open_) elements[above].nodes += nodes;
        element.nodes += nodes - 1;
        for (const std::size_t child : children_[place]) elements[child].within = 0;
        open_.push_back(place);
    }
    void end(std::string_view /*name*/) override { open_.pop_back(); }
    void text(std::string_view piece) override {
        if (piece.find_first_not_of(" \t\r\n") != std::string_view::npos) elements[open_.back()].hasText = true;
    }

  private:
    static constexpr std::size_t kNone = SIZE_MAX;
    static constexpr std::size_t kMostPaths = 5000;
    static constexpr std::size_t kMostAttributes = 200;
    static constexpr std::size_t kLongestPath = 10'000;

    std::size_t placeOf(std::size_t parent, std::string_view name) {
        std::string path = parent == kNone ? std::string() : elements[parent].path + "/";
        path += name;
        const auto [found, isNew] = places_.try_emplace(path, elements.size());
        if (!isNew) return found->second;
        if (elements.size() == kMostPaths || path.size() > kLongestPath) {
            throw PlatformError(errors::kUnreadableXml, "too many kinds of elements, or too long names").quoted();
        }
        Element& element = elements.emplace_back();
        element.path = path;
        element.parent = parent;
        children_.emplace_back();
        if (parent != kNone) children_[parent].push_back(found->second);
        return found->second;
    }

    std::map<std::string, std::size_t> places_;
    std::vector<std::vector<std::size_t>> children_;
    std::vector<std::size_t> open_;
};

/// The element that repeats most often of those that hold most of the document.
const PathCount::Element* recordAmong(const std::vector<PathCount::Element>& elements) {
    const PathCount::Element* record = nullptr;
    const double all = elements.empty() ? 0 : static_cast<double>(elements.front().nodes);
    for (const PathCount::Element& element : elements) {
        if (element.count < 2 || element.parent == SIZE_MAX) continue;
        const bool holds = static_cast<double>(element.nodes + element.count) >= 0.6 * all;
        if (holds && (!record || element.count > record->count)) record = &element;
    }
    if (record) return record;
    for (const PathCount::Element& element : elements) {
        if (element.most > 1 && (element.hasChildren || !element.attributes.empty()) &&
            (!record || element.nodes > record->nodes))
            record = &element;
    }
    return record;
}

}  // namespace

bool findRecords(std::unique_ptr<ByteStream> stream, const std::optional<std::string>& known, SourceFormat& format) {
    PathCount paths;
    const auto refusal = [](const std::string& reason) {
        return PlatformError(errors::kUnreadableXml, reason).quoted();
    };
    try {
        XmlReader(std::move(stream), paths, refusal, XmlReader::DocumentType::WithoutEntities).readOn();
    } catch (const PlatformError& error) {
        // A sample may be cut; what repeats has been seen by then.
        if (error.number() != errors::kUnreadableXml || !recordAmong(paths.elements)) throw;
    }
    const PathCount::Element* record = recordAmong(paths.elements);
    if (known) {
        const auto is = [&](const PathCount::Element& element) { return ("/" + element.path).ends_with("/" + *known); };
        const auto found = std::ranges::find_if(paths.elements, is);
        record = found == paths.elements.end() ? nullptr : &*found;
    }
    if (!record) return false;
    format.record = known.value_or(record->path);
    format.fields.clear();
    for (const PathCount::Element& element : paths.elements) {
        const bool isRecord = element.path == record->path;
        if (!isRecord && !element.path.starts_with(record->path + "/")) continue;
        const std::string path = isRecord ? std::string() : element.path.substr(record->path.size() + 1);
        const std::string above = path.empty() ? path : path + "/";
        for (const std::string& attribute : element.attributes) format.fields.push_back(above + "@" + attribute);
        if (element.hasText || (!element.hasChildren && element.attributes.empty()))
            format.fields.push_back(isRecord ? "." : path);
    }
    return true;
}

}  // namespace kolmera
