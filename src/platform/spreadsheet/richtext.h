#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// Collects the text of a shared or an inline string: what stands in its elements "t", of all its runs, but without the
/// reading aids ("rPh") of East Asian texts. At most 1 MB, far above the 32767 characters that a cell can hold.
class RichText {
  public:
    void clear() { text_.clear(); }
    void start(std::string_view element);
    void end(std::string_view element);
    void add(std::string_view piece);

    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    std::string text_;
    bool inText_ = false;
    bool inReadingAid_ = false;
};

/// Adds a piece to the text of a cell; throws kUnreadableSpreadsheet above 1 MB.
void appendLimited(std::string& text, std::string_view piece);

}  // namespace kolmera
