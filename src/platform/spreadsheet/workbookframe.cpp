#include "platform/spreadsheet/workbookframe.h"

#include <fmt/format.h>

#include <algorithm>
#include <pugixml.hpp>
#include <set>
#include <sstream>
#include <string_view>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

constexpr std::string_view kTypes = "[Content_Types].xml";
constexpr std::string_view kWorksheetType = "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml";

std::string_view localName(const char* name) {
    const std::string_view whole = name;
    return whole.substr(whole.find(':') + 1);
}

/// A part as a document that is changed at one place and keeps everything else as it was written.
class EditedPart {
  public:
    EditedPart(Archive& archive, std::string name) : archive_(archive), name_(std::move(name)) {
        constexpr unsigned kKeepAll =
            (pugi::parse_full | pugi::parse_ws_pcdata) & ~(pugi::parse_eol | pugi::parse_wconv_attribute);
        const std::string bytes = archive.bytes(name_, kMostFrameBytes);
        if (!document_.load_buffer(bytes.data(), bytes.size(), kKeepAll)) {
            throw PlatformError(errors::kUnreadableSpreadsheet, "The part " + name_ + " of the workbook is damaged.");
        }
    }

    [[nodiscard]] pugi::xml_node root() const { return document_.document_element(); }

    /// The last child element of a node; throws where there is none.
    [[nodiscard]] pugi::xml_node lastChild(const pugi::xml_node& node, std::string_view name) const {
        pugi::xml_node found;
        for (const pugi::xml_node& child : node.children()) {
            if (localName(child.name()) == name) found = child;
        }
        if (found) return found;
        throw PlatformError(errors::kUnreadableSpreadsheet, fmt::format("The part {} lacks its {}.", name_, name));
    }

    void save() {
        const pugi::xml_node declaration = document_.first_child();
        if (declaration.type() == pugi::node_declaration) declaration.attribute("encoding").set_value("UTF-8");
        std::ostringstream bytes;
        document_.save(bytes, "", pugi::format_raw, pugi::encoding_utf8);
        archive_.replace(name_, bytes.str());
    }

  private:
    Archive& archive_;
    std::string name_;
    pugi::xml_document document_;
};

pugi::xml_attribute attributeOf(const pugi::xml_node& node, std::string_view name) {
    return node.find_attribute([name](const pugi::xml_attribute& a) { return localName(a.name()) == name; });
}

/// The first name with a number from `number` on that is not taken.
template <typename MakeName, typename IsTaken>
std::string firstFree(std::size_t number, MakeName makeName, IsTaken isTaken) {
    for (;; ++number) {
        std::string name = makeName(number);
        if (!isTaken(name)) return name;
    }
}

}  // namespace

std::string numberedSheetName(const std::string& prefix, std::size_t number) {
    constexpr std::size_t kMostCharacters = 31;
    const std::string digits = std::to_string(number);
    return std::string(firstCharacters(prefix, kMostCharacters - digits.size())) + digits;
}

std::string FrameChange::freePart() const {
    const std::string folder = package_.workbook.substr(0, package_.workbook.rfind('/') + 1);
    return firstFree(
        package_.sheets.size() + 1,
        [&folder](std::size_t number) { return fmt::format("{}worksheets/sheet{}.xml", folder, number); },
        [this](const std::string& part) { return archive_.find(part).has_value(); });
}

std::string FrameChange::freeName(const std::string& prefix) const {
    return firstFree(
        package_.sheets.size(), [&prefix](std::size_t number) { return numberedSheetName(prefix, number); },
        [this](const std::string& name) {
            return std::ranges::any_of(package_.sheets,
                                       [&name](const Package::Sheet& sheet) { return equalNoCase(sheet.name, name); });
        });
}

void FrameChange::enter(const std::string& part, const std::string& name) {
    addToSheets(name, addRelationship(part));
    addType(part);
}

// Copies of neighbours have the namespaces and types of the workbook, whichever form of the format it has.

std::string FrameChange::addRelationship(const std::string& part) {
    EditedPart relationships(archive_, package_.workbookRelationships);
    pugi::xml_node neighbour;
    std::set<std::string> taken;
    for (const pugi::xml_node& child : relationships.root().children()) {
        taken.insert(attributeOf(child, "Id").value());
        if (std::string_view(attributeOf(child, "Type").value()).ends_with("/worksheet")) neighbour = child;
    }
    std::string id = firstFree(
        taken.size() + 1, [](std::size_t number) { return fmt::format("rId{}", number); },
        [&taken](const std::string& name) { return taken.contains(name); });
    pugi::xml_node added = relationships.root().insert_copy_after(neighbour, neighbour);
    attributeOf(added, "Id").set_value(id.c_str());
    const std::string folder = package_.workbook.substr(0, package_.workbook.rfind('/') + 1);
    attributeOf(added, "Target").set_value(part.substr(folder.size()).c_str());
    relationships.save();
    return id;
}

void FrameChange::addToSheets(const std::string& name, const std::string& relationship) {
    EditedPart workbook(archive_, package_.workbook);
    pugi::xml_node sheets = workbook.lastChild(workbook.root(), "sheets");
    unsigned highest = 0;
    for (const pugi::xml_node& sheet : sheets.children()) {
        highest = std::max(highest, attributeOf(sheet, "sheetId").as_uint());
    }
    const pugi::xml_node neighbour = workbook.lastChild(sheets, "sheet");
    pugi::xml_node added = sheets.insert_copy_after(neighbour, neighbour);
    attributeOf(added, "name").set_value(name.c_str());
    attributeOf(added, "sheetId").set_value(highest + 1);
    attributeOf(added, "id").set_value(relationship.c_str());
    added.remove_attribute(attributeOf(added, "state"));  // the neighbour may be hidden
    workbook.save();
}

void FrameChange::addType(const std::string& part) {
    EditedPart types(archive_, std::string(kTypes));
    const std::string rootName = types.root().name();
    const std::string prefix = rootName.substr(0, rootName.size() - localName(rootName.c_str()).size());
    pugi::xml_node added = types.root().append_child((prefix + "Override").c_str());
    added.append_attribute("PartName").set_value(("/" + part).c_str());
    added.append_attribute("ContentType").set_value(std::string(kWorksheetType).c_str());
    types.save();
}

}  // namespace kolmera
