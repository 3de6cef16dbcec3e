// libFuzzer's way into the readers of price files and into detection. Which one is FUZZED; the bytes are a whole file,
// but for the parts of workbooks, which are put into a zip that is sound.
#include <sys/mman.h>
#include <unistd.h>
#include <zip.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "source/detection/detection.h"
#include "source/readers/opensource.h"

namespace {

using namespace kolmera;

enum class Fuzzed { Delimited, Fixed, Xls, Packed, Sheet, OpenDocument, Xml, Detection };
constexpr Fuzzed kFuzzed = Fuzzed::FUZZED;

constexpr const char* kTypes = "<Types/>";
constexpr const char* kTop =
    R"(<Relationships><Relationship Id="a" Type="x/officeDocument" Target="w.xml"/></Relationships>)";
constexpr const char* kBook =
    R"(<workbook xmlns:r="r"><sheets><sheet name="B" sheetId="1" r:id="s"/></sheets></workbook>)";
constexpr const char* kParts =
    R"(<Relationships><Relationship Id="s" Type="x/worksheet" Target="s.xml"/><Relationship Id="t" Type="x/sharedStrings" Target="t.xml"/></Relationships>)";
constexpr const char* kTexts = "<sst><si><t>noll</t></si><si><t>ett</t></si></sst>";

void add(zip_t* archive, const char* name, std::string_view bytes) {
    zip_source_t* source = zip_source_buffer(archive, bytes.data(), bytes.size(), 0);
    const zip_int64_t index = zip_file_add(archive, name, source, 0);
    zip_set_file_compression(archive, static_cast<zip_uint64_t>(index), ZIP_CM_STORE, 0);
}

Descriptor memoryFile(std::string_view bytes) {
    Descriptor file(memfd_create("fuzzed", MFD_CLOEXEC));
    file.write(bytes);
    lseek(file.get(), 0, SEEK_SET);
    return file;
}

std::string zipAround(std::string_view part) {
    zip_error_t error;
    zip_source_t* target = zip_source_buffer_create(nullptr, 0, 0, &error);
    zip_t* archive = zip_open_from_source(target, ZIP_TRUNCATE, &error);
    zip_source_keep(target);
    if (kFuzzed == Fuzzed::Sheet) {
        add(archive, "[Content_Types].xml", kTypes);
        add(archive, "_rels/.rels", kTop);
        add(archive, "w.xml", kBook);
        add(archive, "_rels/w.xml.rels", kParts);
        add(archive, "t.xml", kTexts);
        add(archive, "s.xml", part);
    } else {
        add(archive, "mimetype", "x");
        add(archive, "content.xml", part);
    }
    zip_close(archive);
    zip_stat_t status;
    zip_source_stat(target, &status);
    std::string bytes(status.size, '\0');
    zip_source_open(target);
    zip_source_read(target, bytes.data(), bytes.size());
    zip_source_close(target);
    zip_source_free(target);
    return bytes;
}

SourceFormat formatOf(std::string_view& bytes) {
    SourceFormat format;
    switch (kFuzzed) {
        case Fuzzed::Delimited:
        case Fuzzed::Fixed:
            format.kind = kFuzzed == Fuzzed::Fixed ? SourceKind::Fixed : SourceKind::Delimited;
            format.starts = {0, 3, 8};
            if (!bytes.empty()) {
                const auto first = static_cast<std::uint8_t>(bytes.front());
                format.characters = static_cast<CharacterSet>(first % 7);
                format.delimiter = ";\t,|"[first / 7 % 4];
                format.quote = first & 0x80 ? '"' : '\'';
                if (kFuzzed == Fuzzed::Fixed && first & 0x80) format.length = 1 + first % 40;
                bytes.remove_prefix(1);
            }
            break;
        case Fuzzed::Xls:
            format.kind = SourceKind::Xls;
            break;
        case Fuzzed::Sheet:
            format.kind = SourceKind::Xlsx;
            break;
        case Fuzzed::OpenDocument:
            format.kind = SourceKind::Ods;
            break;
        case Fuzzed::Xml:
            format.kind = SourceKind::Xml;
            format.record = "r";
            format.fields = {"a", "b/@c", ".", "@d"};
            break;
        case Fuzzed::Packed:
        case Fuzzed::Detection:
            break;
    }
    return format;
}

void read(std::string_view bytes) {
    SourceLimits limits;
    limits.rowBytes = 100'000;
    limits.columns = 1000;
    limits.unpackedBytes = 10'000'000;
    if (kFuzzed == Fuzzed::Detection) {
        const Descriptor file = memoryFile(bytes);
        const std::string path = "/proc/self/fd/" + std::to_string(file.get());
        const Detection found = detectSource(path, {}, limits);
        sampleRows(path, found.format, 100, limits);
        return;
    }
    const SourceFormat format = formatOf(bytes);
    const bool isPart = kFuzzed == Fuzzed::Sheet || kFuzzed == Fuzzed::OpenDocument;
    const auto reader = openRows(memoryFile(isPart ? zipAround(bytes) : std::string(bytes)), format, limits);
    std::uint64_t last = 0;
    Row row;
    for (int rows = 0; rows < 10'000 && reader->next(row); ++rows) {
        for (const Cell& cell : row.cells) {
            if (cell.text.size() > limits.rowBytes * 4) std::abort();
        }
        if (row.cells.size() > 20'000) std::abort();
        if ((kFuzzed == Fuzzed::Delimited || kFuzzed == Fuzzed::Fixed) && row.number <= last) std::abort();
        last = row.number;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        read({reinterpret_cast<const char*>(data), size});
    } catch (const PlatformError&) {
        // A clear message is what a damaged file is to end with.
    }
    return 0;
}
