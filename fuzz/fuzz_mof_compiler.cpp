// Feeds arbitrary bytes to the MOF compiler and builds a class repository
// from what it accepts. Any input must end in either a repository or a
// MofError; crashes, leaks, hangs and undefined behaviour are
// faults. An include of "self.mof" reads the input again, so that include
// handling and its cycle check are reached too.
#include "ClassRepository.h"
#include "MofError.h"
#include "MofParser.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    zda::mof::FileReader reader = [&text](const std::string& path, const zda::mof::SourceLocation& from) {
        if (path == "self.mof" || path == "dir/self.mof")
            return text;
        throw zda::mof::MofError(from, "cannot open \"" + path + "\"");
    };
    try
    {
        zda::server::ClassRepository repository(zda::mof::parseMof(text, "input.mof", "root/fuzz", reader));
    }
    catch (const zda::mof::MofError&)
    {}
    return 0;
}
