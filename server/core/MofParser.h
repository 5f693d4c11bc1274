// Parses MOF text into declarations.
//
// Supported: comments; #pragma include and #pragma namespace (#pragma locale
// and instancelocale are accepted and ignored); qualifier declarations with
// scope and flavor; classes with qualifiers, scalar and array properties with
// defaults, references, and methods with qualified parameters; instance
// declarations with aliases. Everything else is an error naming the file,
// line and column and what was expected there.
#ifndef ZDA_SERVER_MOF_PARSER_H
#define ZDA_SERVER_MOF_PARSER_H

#include "MofAst.h"

#include <functional>
#include <string>
#include <vector>

namespace zda::mof
{

// Reads the file at `path` (already resolved against the including file's
// folder) for an include written at `from`. Returns its text or throws
// MofError located at `from`.
using FileReader = std::function<std::string(const std::string& path, const SourceLocation& from)>;

// A reader of the local file system.
FileReader fileSystemReader();

// Parses `text`, named `fileName` in positions, with `defaultNamespace`
// current until a namespace pragma changes it. A namespace pragma lasts to
// the end of the file that holds it (an included file starts with the
// includer's namespace and does not change it for the includer). Includes
// are read through `reader`, relative to the folder of the including file;
// nesting is limited to 16 levels and a file may not include itself,
// directly or not. Throws MofError at the first fault.
std::vector<Declaration> parseMof(const std::string& text, const std::string& fileName,
    const std::string& defaultNamespace, const FileReader& reader);

// Reads and parses the file at `path`.
std::vector<Declaration> parseMofFile(const std::string& path, const std::string& defaultNamespace,
    const FileReader& reader = fileSystemReader());

}  // namespace zda::mof

#endif
