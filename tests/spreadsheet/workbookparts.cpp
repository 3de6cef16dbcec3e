#include "spreadsheet/workbookparts.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <zip.h>

#include <fstream>
#include <iterator>

#include "platform/spreadsheet/workbook.h"

namespace kolmera::test {

namespace {

constexpr std::string_view kTypes =
    R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types"><Default Extension="xml" ContentType="application/xml"/>
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>
<Override PartName="/xl/worksheets/blad.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/></Types>)";
constexpr std::string_view kRelationships =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="a" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/></Relationships>)";
constexpr std::string_view kWorkbook =
    R"(<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships">
<workbookPr/><sheets><sheet name="Blad" sheetId="7" r:id="s1"/></sheets></workbook>)";
constexpr std::string_view kWorkbookRelationships =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="s1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/blad.xml"/>
<Relationship Id="s2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings" Target="sharedStrings.xml"/>
<Relationship Id="s3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/></Relationships>)";
constexpr std::string_view kTexts =
    R"(<sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><si><t>noll</t></si>
<si><r><rPr><b/></rPr><t>ett </t></r><r><t>två</t></r><rPh sb="0" eb="1"><t>reading aid</t></rPh></si><si><t/></si></sst>)";
constexpr std::string_view kStyles =
    R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><numFmts>
<numFmt numFmtId="164" formatCode="[$-41D]d&quot; i &quot;mmmm yy;@"/><numFmt numFmtId="165" formatCode="[h]:mm:ss"/>
<numFmt numFmtId="166" formatCode="0.00\ &quot;kr/dygn&quot;[Red]_d"/></numFmts>
<cellStyleXfs><xf numFmtId="14"/></cellStyleXfs>
<cellXfs><xf numFmtId="0"/><xf numFmtId="14"/><xf numFmtId="164"/><xf numFmtId="165"/><xf numFmtId="166"/></cellXfs></styleSheet>)";

}  // namespace

Parts workbookOf(std::string_view rows) {
    return {{"[Content_Types].xml", std::string(kTypes)},
            {"_rels/.rels", std::string(kRelationships)},
            {"xl/workbook.xml", std::string(kWorkbook)},
            {"xl/_rels/workbook.xml.rels", std::string(kWorkbookRelationships)},
            {"xl/sharedStrings.xml", std::string(kTexts)},
            {"xl/styles.xml", std::string(kStyles)},
            {"xl/worksheets/blad.xml",
             fmt::format(R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
                         R"(<dimension ref="A1:A1"/><sheetData>{}</sheetData><row><c><v>9</v></c></row></worksheet>)",
                         rows)}};
}

void writeZip(const std::filesystem::path& file, const Parts& parts) {
    zip_t* archive = zip_open(file.c_str(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    ASSERT_TRUE(archive);
    for (const auto& [name, bytes] : parts) {
        zip_source_t* source = zip_source_buffer(archive, bytes.data(), bytes.size(), 0);
        ASSERT_GE(zip_file_add(archive, name.c_str(), source, 0), 0) << name;
    }
    ASSERT_EQ(zip_close(archive), 0);
}

Parts readZip(const std::filesystem::path& file) {
    Parts parts;
    zip_t* archive = zip_open(file.c_str(), ZIP_RDONLY, nullptr);
    EXPECT_TRUE(archive) << file;
    for (zip_int64_t i = 0; archive && i < zip_get_num_entries(archive, 0); ++i) {
        zip_stat_t status;
        zip_stat_index(archive, static_cast<zip_uint64_t>(i), 0, &status);
        std::string bytes(status.size, '\0');
        zip_file_t* entry = zip_fopen_index(archive, static_cast<zip_uint64_t>(i), 0);
        EXPECT_EQ(zip_fread(entry, bytes.data(), bytes.size()), static_cast<zip_int64_t>(bytes.size()));
        zip_fclose(entry);
        parts[status.name] = bytes;
    }
    if (archive) zip_discard(archive);
    return parts;
}

namespace {

struct Print {
    std::string operator()(const Null&) const { return "-"; }
    std::string operator()(bool truth) const { return truth ? "TRUE" : "FALSE"; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return fmt::format("{}", number); }
    std::string operator()(const Date& date) const { return date.iso(); }
    std::string operator()(const std::string& text) const { return "'" + text + "'"; }
};

}  // namespace

std::string rowsOf(const std::filesystem::path& file) {
    constexpr std::size_t kColumns = 30;
    std::string lines;
    readFirstSheet(file, kColumns, [&lines](std::span<const Value> row) {
        for (const Value& value : row) lines += std::visit(Print(), value) + " ";
        lines.back() = '\n';
    });
    return lines;
}

std::filesystem::path savedWorkbook(std::string_view name) {
    return std::filesystem::path(KOLMERA_SOURCE_DIR) / "tests/data/spreadsheet" / name;
}

std::string savedBytes(std::string_view name) {
    std::ifstream file(savedWorkbook(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string protectedXlsx() {
    constexpr std::size_t kNameSize = 64;
    const auto wide = [](std::string_view text) {
        std::string units;
        for (const char c : text) units += {c, '\0'};
        return units;
    };
    std::string bytes = savedBytes("letter.xls");
    const std::size_t entry = bytes.find(wide("Workbook"));
    const std::string name = wide("EncryptedPackage");
    bytes.replace(entry, name.size(), name);
    bytes[entry + kNameSize] = static_cast<char>(name.size() + 2);
    return bytes;
}

}  // namespace kolmera::test
