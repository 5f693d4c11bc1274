// Gives method parameters that arrived untyped (as text) the type of their
// declaration, so that providers can read them with the type they expect.
#ifndef ZDA_SERVER_PARAMETER_TYPING_H
#define ZDA_SERVER_PARAMETER_TYPING_H

#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParamValue.h>

namespace zda::server
{

// New parameter values for `method`'s input: typed ones are kept as given
// (shared); each untyped one (a string, an array of strings, or null) is
// converted to its parameter's declared type and array-ness and marked
// typed. A parameter declared EmbeddedInstance or EmbeddedObject that came
// as CIM-XML text, typed as a string or not, becomes the instance or
// object the text holds. The input array is not changed.
//
// Throws CIMException: CIM_ERR_INVALID_PARAMETER for a parameter the method
// does not declare or a text that is no value of the declared type (the
// message names the parameter and the text, also for an embedded object's
// text that does not parse); CIM_ERR_TYPE_MISMATCH when the
// value is an array and the declaration not, or the other way round.
Pegasus::Array<Pegasus::CIMParamValue> typeParameters(
    const Pegasus::CIMConstMethod& method, const Pegasus::Array<Pegasus::CIMParamValue>& inParameters);

// The value of the declared type written as `text` (the forms of CIM-XML:
// decimal or 0x-hexadecimal integers, true/false in any case, reals,
// one-character char16, date-times, object paths). Throws
// CIMException(CIM_ERR_INVALID_PARAMETER) naming `what` when `text` is no
// such value; embedded objects and instances cannot be given as text.
Pegasus::CIMValue valueFromText(
    const Pegasus::String& text, Pegasus::CIMType type, const Pegasus::String& what);

}  // namespace zda::server

#endif
