// How a failure inside a provider becomes the CIM error of the response.
#ifndef ZDA_SERVER_PROVIDER_ERRORS_H
#define ZDA_SERVER_PROVIDER_ERRORS_H

#include <Pegasus/Common/Exception.h>

namespace zda::server
{

// To be called inside a catch block. Rethrows the exception being handled
// as the CIMException the client receives: a CIMException (of any class)
// unchanged, with its code, message and error instances; any other
// Pegasus::Exception as CIM_ERR_FAILED with its message; a std::exception
// as CIM_ERR_FAILED with what(); anything else as CIM_ERR_FAILED "Unknown
// error.". Thread cancellation keeps unwinding untouched.
[[noreturn]] void rethrowAsCIMException();

// The text a client sees for an error: "<CIM_ERR_NAME>: <message>" (just the
// name when the message is empty), or 'Unrecognized CIM status code "<n>":
// <message>' for codes outside the named ones.
Pegasus::String errorDescription(const Pegasus::CIMException& error);

}  // namespace zda::server

#endif
