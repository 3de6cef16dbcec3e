# cmake -DTEXTS=texts.tsv -DSOURCE=builtintexts.cpp -P builtintexts.cmake: makes the source of builtInTexts().
file(READ ${TEXTS} text)
string(REPLACE "\n" ")tsv\",\n    R\"tsv(" lines "${text}")
file(WRITE ${SOURCE} "// Made from data/lang/texts.tsv by the build.
#include \"cli/builtintexts.h\"

namespace kolmera::cli {

std::span<const std::string_view> builtInTexts() {
  static constexpr std::string_view kLines[] = {
    R\"tsv(${lines})tsv\"};
  return kLines;
}

}  // namespace kolmera::cli
")
