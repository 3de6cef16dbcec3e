#include "platform/spreadsheet/newworkbook.h"

#include <fmt/format.h>

#include "platform/spreadsheet/celltext.h"

namespace kolmera {
namespace {

struct Part {
    const char* name;
    const char* xml;  ///< behind the declaration; see addNewFrame for what stands in braces
};

constexpr Part kFrame[] = {
    {"[Content_Types].xml",
     R"(<Types xmlns="{open}package/2006/content-types">)"
     R"(<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>)"
     R"(<Default Extension="xml" ContentType="application/xml"/>)"
     R"(<Override PartName="/xl/workbook.xml" ContentType="{type}sheet.main+xml"/>)"
     R"(<Override PartName="/xl/worksheets/sheet1.xml" ContentType="{type}worksheet+xml"/>)"
     R"(<Override PartName="/xl/styles.xml" ContentType="{type}styles+xml"/></Types>)"},
    {"_rels/.rels",
     R"(<Relationships xmlns="{open}package/2006/relationships"><Relationship Id="rId1" )"
     R"(Type="{open}officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/></Relationships>)"},
    {"xl/workbook.xml",
     R"(<workbook xmlns="{open}spreadsheetml/2006/main" xmlns:r="{open}officeDocument/2006/relationships">)"
     R"(<sheets><sheet name="{sheet}" sheetId="1" r:id="rId1"/></sheets></workbook>)"},
    {"xl/_rels/workbook.xml.rels",
     R"(<Relationships xmlns="{open}package/2006/relationships"><Relationship Id="rId1" )"
     R"(Type="{open}officeDocument/2006/relationships/worksheet" Target="worksheets/sheet1.xml"/><Relationship )"
     R"(Id="rId2" Type="{open}officeDocument/2006/relationships/styles" Target="styles.xml"/></Relationships>)"},
    {"xl/styles.xml",
     R"(<styleSheet xmlns="{open}spreadsheetml/2006/main">)"
     R"(<fonts count="1"><font><sz val="11"/><name val="Calibri"/><family val="2"/></font></fonts>)"
     R"(<fills count="2"><fill><patternFill patternType="none"/></fill>)"
     R"(<fill><patternFill patternType="gray125"/></fill></fills>)"
     R"(<borders count="1"><border><left/><right/><top/><bottom/><diagonal/></border></borders>)"
     R"(<cellStyleXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/></cellStyleXfs>)"
     R"(<cellXfs count="1"><xf numFmtId="0" fontId="0" fillId="0" borderId="0" xfId="0"/></cellXfs>)"
     R"(<cellStyles count="1"><cellStyle name="Normal" xfId="0" builtinId="0"/></cellStyles></styleSheet>)"},
};

}  // namespace

void addNewFrame(Archive& archive, const std::string& sheetName) {
    std::string name;
    appendCellText(sheetName, name);
    for (const Part& part : kFrame) {
        archive.add(part.name,
                    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
                    "\n" +
                        fmt::format(fmt::runtime(part.xml), fmt::arg("open", "http://schemas.openxmlformats.org/"),
                                    fmt::arg("type", "application/vnd.openxmlformats-officedocument.spreadsheetml."),
                                    fmt::arg("sheet", name)));
    }
}

}  // namespace kolmera
