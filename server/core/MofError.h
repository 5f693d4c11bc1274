// The error every stage of the MOF compiler reports.
#ifndef ZDA_SERVER_MOF_ERROR_H
#define ZDA_SERVER_MOF_ERROR_H

#include "MofAst.h"

#include <stdexcept>
#include <string>

namespace zda::mof
{

// A fault in MOF text: where it is and what was wrong or expected there.
// what() is "file:line:column: message".
class MofError : public std::runtime_error
{
public:
    MofError(SourceLocation where, const std::string& message);

    const SourceLocation& where() const { return _where; }
    const std::string& message() const { return _message; }

private:
    SourceLocation _where;
    std::string _message;
};

}  // namespace zda::mof

#endif
