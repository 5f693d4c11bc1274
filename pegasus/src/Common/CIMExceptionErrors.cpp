// The CIMException members that carry error instances.
#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Initialized instances are cloned so that the exception does not share
// the caller's object; uninitialized ones are kept as they are.
CIMInstance errorCopy(const CIMInstance& instance)
{
    return instance.isUninitialized() ? instance : instance.clone();
}

}  // namespace

CIMException::CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance)
    : Exception(message), _code(code)
{
    auto errors = std::make_shared<Array<CIMInstance>>();
    errors->append(errorCopy(instance));
    _errors = errors;
}

CIMException::CIMException(CIMStatusCode code, const String& message, const Array<CIMInstance>& instances)
    : Exception(message), _code(code)
{
    if (instances.size() == 0)
        return;
    auto errors = std::make_shared<Array<CIMInstance>>();
    for (Uint32 i = 0; i < instances.size(); i++)
        errors->append(errorCopy(instances[i]));
    _errors = errors;
}

CIMConstInstance CIMException::getError(Uint32 index) const
{
    if (!_errors)
        throw IndexOutOfBoundsException();
    return (*_errors)[index];
}

void CIMException::addError(const CIMInstance& instance)
{
    auto errors = _errors ? std::make_shared<Array<CIMInstance>>(*_errors)
                          : std::make_shared<Array<CIMInstance>>();
    errors->append(errorCopy(instance));
    _errors = errors;
}

PEGASUS_NAMESPACE_END
