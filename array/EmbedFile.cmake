# Writes a C++ source whose function NAME() returns the text of the file IN:
#   cmake -DIN=<file> -DOUT=<source> -DNAME=<function> -P EmbedFile.cmake
# The output is only replaced when its text changes, so that an unchanged
# file does not rebuild the library.
file(READ "${IN}" content)
string(FIND "${content}" ")zda_embed\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "${IN} holds the raw string delimiter )zda_embed\"")
endif()
set(text "// Generated from ${IN}; edit that file instead.
#include <string>

namespace zdasim {

const std::string& ${NAME}() {
    static const std::string text = R\"zda_embed(${content})zda_embed\";
    return text;
}

}  // namespace zdasim
")
if(EXISTS "${OUT}")
  file(READ "${OUT}" old)
  if(old STREQUAL text)
    return()
  endif()
endif()
file(WRITE "${OUT}" "${text}")
