#include "platform/spreadsheet/package.h"

#include <algorithm>
#include <filesystem>

#include "platform/error.h"
#include "platform/lettercase.h"
#include "platform/spreadsheet/xmlpart.h"

namespace kolmera {

namespace {

[[noreturn]] void refuse(const std::string& reason) { throw PlatformError(errors::kUnreadableSpreadsheet, reason); }

std::string folderOf(const std::string& part) { return part.substr(0, part.rfind('/') + 1); }

/// "xl/workbook.xml" has its relations in "xl/_rels/workbook.xml.rels"; the file's own are those of the empty name.
std::string relationshipsPartOf(const std::string& part) {
    const std::string folder = folderOf(part);
    return folder + "_rels/" + part.substr(folder.size()) + ".rels";
}

/// A target counts from the folder of the part that names it, or from the top when it starts with "/".
std::string resolved(std::string_view target, const std::string& from) {
    const bool absolute = target.starts_with('/');
    const std::filesystem::path path = absolute ? target.substr(1) : folderOf(from) + std::string(target);
    return path.lexically_normal().string();
}

class RelationshipList final : public XmlHandler {
  public:
    explicit RelationshipList(std::string from) : from_(std::move(from)) {}

    void start(std::string_view name, const XmlAttributes& attributes) override {
        if (name != "Relationship") return;
        const std::string_view type = attributes["Type"];
        isStrict |= type.starts_with("http://purl.oclc.org/");
        const bool outside = attributes["TargetMode"] == "External";
        list.push_back({std::string(attributes["Id"]), std::string(type.substr(type.rfind('/') + 1)),
                        outside ? std::string() : resolved(attributes["Target"], from_)});
    }

    std::vector<Relationship> list;
    bool isStrict = false;

  private:
    std::string from_;
};

RelationshipList relationshipsOf(const Archive& archive, const std::string& part) {
    RelationshipList relationships(part);
    readXmlPart(archive, relationshipsPartOf(part), kMostFrameBytes, relationships);
    return relationships;
}

class WorkbookPart final : public XmlHandler {
  public:
    explicit WorkbookPart(Package& package) : package_(package) {}

    void start(std::string_view name, const XmlAttributes& attributes) override {
        if (name == "workbookPr") {
            package_.startsIn1904 = attributes.isTrue("date1904");
        } else if (name == "workbookProtection") {
            package_.isLocked |= attributes.isTrue("lockStructure");
        } else if (name == "fileSharing") {
            package_.isLocked |= !attributes["reservationPassword"].empty() || !attributes["hashValue"].empty();
        } else if (name == "sheet") {
            addSheet(std::string(attributes["name"]), attributes["id"], attributes["state"].ends_with("idden"));
        }
    }

  private:
    void addSheet(std::string name, std::string_view id, bool isHidden) {
        const auto found = std::ranges::find(package_.relationships, id, &Relationship::id);
        if (found == package_.relationships.end())
            refuse("The workbook does not tell where its sheet " + name + " is.");
        package_.sheets.push_back({std::move(name), found->target, found->type == "worksheet", isHidden});
    }

    Package& package_;
};

}  // namespace

Package Package::of(const Archive& archive) {
    Package package;
    if (!archive.find(relationshipsPartOf({}))) refuse("The file is not a workbook.");
    const RelationshipList top = relationshipsOf(archive, {});
    for (const Relationship& relationship : top.list) {
        if (relationship.type == "officeDocument" && package.workbook.empty()) package.workbook = relationship.target;
        package.isSigned |= relationship.type == "origin";
    }
    if (package.workbook.empty()) refuse("The file is not a workbook.");
    if (package.workbook.ends_with(".bin")) refuse("Binary workbooks (.xlsb) cannot be read.");
    package.isStrict = top.isStrict;
    package.workbookRelationships = relationshipsPartOf(package.workbook);
    package.relationships = relationshipsOf(archive, package.workbook).list;
    WorkbookPart part(package);
    readXmlPart(archive, package.workbook, kMostFrameBytes, part);
    return package;
}

const Package::Sheet& Package::firstWorksheet() const {
    const auto found = std::ranges::find(sheets, true, &Sheet::isWorksheet);
    if (found == sheets.end()) refuse("The workbook has no sheets.");
    return *found;
}

const Package::Sheet& Package::worksheet(const std::string& name) const {
    if (name.empty()) return firstWorksheet();
    const auto found = std::ranges::find_if(
        sheets, [&](const Sheet& sheet) { return sheet.isWorksheet && equalNoCase(sheet.name, name); });
    if (found == sheets.end()) throw PlatformError(errors::kNoSuchSheet, "not in the workbook").about(name);
    return *found;
}

std::string Package::partOfType(std::string_view type) const {
    const auto found = std::ranges::find(relationships, type, &Relationship::type);
    return found == relationships.end() ? std::string() : found->target;
}

}  // namespace kolmera
