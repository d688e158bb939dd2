# Writes the parts of the viewer page, and the hashes that its policy allows, as the texts of view/PageParts.h.
#
# FOLDER  with page.html, page.css and viewer.js, which are in ASCII
# OUTPUT  the source to write

set(chunk 12000)
set(delimiter gslpage)
set(source "// Made by view/page/embed.cmake.\n#include \"PageParts.h\"\n\nnamespace gsl_view {\n\n")

# Compilers need not accept longer literals.
function(append_part name file)
  file(READ "${FOLDER}/${file}" text)
  string(FIND "${text}" ")${delimiter}\"" place)
  if(NOT place EQUAL -1)
    message(FATAL_ERROR "${file} holds the end of the literal that is to hold it")
  endif()
  string(LENGTH "${text}" length)
  set(literals "")
  set(from 0)
  while(from LESS length)
    string(SUBSTRING "${text}" ${from} ${chunk} literal)
    string(APPEND literals "    std::string_view(R\"${delimiter}(${literal})${delimiter}\"),\n")
    math(EXPR from "${from} + ${chunk}")
  endwhile()
  string(APPEND source "const std::vector<std::string_view>& ${name}() {\n"
    "  static const std::vector<std::string_view> parts = {\n${literals}  };\n  return parts;\n}\n\n")
  set(source "${source}" PARENT_SCOPE)
endfunction()

function(append_hash name file)
  file(SHA256 "${FOLDER}/${file}" hash)
  string(APPEND source "const char* ${name}() {\n  return \"${hash}\";\n}\n\n")
  set(source "${source}" PARENT_SCOPE)
endfunction()

append_part(PageMarkup page.html)
append_part(PageStyle page.css)
append_part(PageScript viewer.js)
append_hash(PageStyleHash page.css)
append_hash(PageScriptHash viewer.js)
file(WRITE "${OUTPUT}" "${source}} // namespace gsl_view\n")
