#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace kolmera::cli {

/// Rows of texts whose columns stand below each other. What would act on a terminal is written out, see `printable`.
class TextTable {
  public:
    explicit TextTable(std::vector<std::string> headings) { add(std::move(headings)); }
    void add(std::vector<std::string> row);
    void print(std::ostream& out) const;
    /// Prints them, and begins a next page under the same headings.
    void printAndEmpty(std::ostream& out);

  private:
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace kolmera::cli
