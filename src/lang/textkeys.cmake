# Makes lang/keys/GROUP.h in the build folder: a constant for each name in the last column of data/lang/texts.tsv. A header
# is written when it has changed, so that a new text recompiles only what uses its group.
set(texts ${PROJECT_SOURCE_DIR}/data/lang/texts.tsv)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${texts})
file(READ ${texts} rows)
string(REGEX REPLACE "[][;]" " " rows "${rows}")
string(REGEX REPLACE "\t[^\n]*\t" "\t" rows "${rows}")  # what is left of a row: its key and its name
string(REPLACE "\n" ";" rows "${rows}")
set(text_groups)
foreach(row ${rows})
  if(row MATCHES "^SP_FRM_([^_\t]+)_String0*([0-9]+)\t")
    set(key "FormKey @@{\"${CMAKE_MATCH_1}\", ${CMAKE_MATCH_2}}")
  elseif(row MATCHES "^SP_MOD_([A-Z]+)_0*([0-9]+)\t")
    set(key "ModuleKey @@{\"${CMAKE_MATCH_1}\", ${CMAKE_MATCH_2}}")
  elseif(row MATCHES "^RES_([0-9]+)\t")
    set(key "MessageKey @@{${CMAKE_MATCH_1}}")
  else()
    continue()  # found by the name of a control or of a column
  endif()
  if(NOT row MATCHES "\t([a-z]+)::(k[A-Z][A-Za-z0-9]*)$")
    message(FATAL_ERROR " ${texts}: the last column has no name such as run::kStopped: ${row}")
  endif()
  set(group ${CMAKE_MATCH_1})
  string(REPLACE "@@" ${CMAKE_MATCH_2} key "${key}")
  if(NOT group IN_LIST text_groups)
    list(APPEND text_groups ${group})
    set(keys_${group})
  endif()
  string(APPEND keys_${group} "inline constexpr ${key};\n")
endforeach()
foreach(group ${text_groups})
  file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/lang/keys/${group}.h @ONLY CONTENT "// Made from data/lang/texts.tsv.
#pragma once

#include \"lang/textkeys.h\"

namespace kolmera::text::${group} {
${keys_${group}}}  // namespace kolmera::text::${group}
")
endforeach()
