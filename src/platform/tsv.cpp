#include "platform/tsv.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

std::string readWholeFile(const std::filesystem::path& file) {
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream) {
        const int code = errno == 0 ? EIO : errno;
        throw PlatformError(errors::kFileNotFound, std::generic_category().message(code))
            .ofSystem(code)
            .about(file.string());
    }
    return std::move(text).str();
}

Tsv Tsv::parse(std::string_view text) {
    Tsv table;
    for (std::string& line : split(text, "\n")) {
        if (line.ends_with('\r')) line.pop_back();
        if (line.empty() || line.front() == '#') continue;
        std::vector<std::string> cells = split(line, "\t");
        if (table.columns.empty()) {
            table.columns = std::move(cells);
        } else {
            if (cells.size() < table.columns.size()) cells.resize(table.columns.size());
            table.rows.push_back(std::move(cells));
        }
    }
    return table;
}

Tsv Tsv::read(const std::filesystem::path& file) { return parse(readWholeFile(file)); }

int Tsv::column(std::string_view name) const {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i] == name) return static_cast<int>(i);
    }
    return -1;
}

}  // namespace kolmera
