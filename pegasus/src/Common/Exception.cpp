#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/MessageLoader.h>

PEGASUS_NAMESPACE_BEGIN

void ArrayThrowIndexOutOfBoundsException()
{
    throw IndexOutOfBoundsException();
}

namespace
{

// The text of a message, with the content language it was produced in.
String loadMessage(const MessageLoaderParms& msgParms, ContentLanguageList& langs)
{
    MessageLoaderParms parms(msgParms);
    String text = MessageLoader::getMessage(parms);
    langs = parms.contentlanguages;
    return text;
}

}  // namespace

Exception::Exception() {}

Exception::Exception(const String& message) : _message(message) {}

Exception::Exception(const MessageLoaderParms& msgParms)
{
    _message = loadMessage(msgParms, _contentLanguages);
}

Exception::Exception(const Exception& exception)
    : _message(exception._message), _contentLanguages(exception._contentLanguages)
{}

Exception& Exception::operator=(const Exception& exception)
{
    _message = exception._message;
    _contentLanguages = exception._contentLanguages;
    return *this;
}

Exception::~Exception() {}

const String& Exception::getMessage() const
{
    return _message;
}

const ContentLanguageList& Exception::getContentLanguages() const
{
    return _contentLanguages;
}

void Exception::setContentLanguages(const ContentLanguageList& langs)
{
    _contentLanguages = langs;
}

// Exceptions whose message is a fixed text, or a fixed prefix and the text
// they are given.
#define FIXED_MESSAGE_EXCEPTION(NAME, TEXT)                                                                  \
    NAME::NAME() : Exception(TEXT) {}

#define PREFIXED_MESSAGE_EXCEPTION(NAME, PREFIX)                                                             \
    NAME::NAME(const String& text) : Exception(String(PREFIX) + text) {}                                     \
    NAME::NAME(const MessageLoaderParms& msgParms) : Exception(msgParms) {}

FIXED_MESSAGE_EXCEPTION(NullPointer, "null pointer")
FIXED_MESSAGE_EXCEPTION(IndexOutOfBoundsException, "index out of bounds")
FIXED_MESSAGE_EXCEPTION(UninitializedObjectException, "uninitialized object")
FIXED_MESSAGE_EXCEPTION(DynamicCastFailedException, "dynamic cast failed")
FIXED_MESSAGE_EXCEPTION(InvalidDateTimeFormatException, "invalid datetime format")
FIXED_MESSAGE_EXCEPTION(CannotCreateSocketException, "Cannot create socket")
FIXED_MESSAGE_EXCEPTION(AlreadyConnectedException, "already connected")
FIXED_MESSAGE_EXCEPTION(NotConnectedException, "not connected")
FIXED_MESSAGE_EXCEPTION(ConnectionTimeoutException, "connection timed out")
FIXED_MESSAGE_EXCEPTION(InvalidEnumerationContextException, "invalid enumeration context")

PREFIXED_MESSAGE_EXCEPTION(AlreadyExistsException, "already exists: ")
PREFIXED_MESSAGE_EXCEPTION(InvalidNameException, "The CIM name is not valid: ")
PREFIXED_MESSAGE_EXCEPTION(InvalidNamespaceNameException, "invalid CIM namespace name: ")
PREFIXED_MESSAGE_EXCEPTION(MalformedObjectNameException, "malformed object name: ")
PREFIXED_MESSAGE_EXCEPTION(BindFailedException, "Bind failed: ")
PREFIXED_MESSAGE_EXCEPTION(InvalidLocatorException, "Invalid locator: ")
PREFIXED_MESSAGE_EXCEPTION(CannotConnectException, "Cannot connect to: ")
PREFIXED_MESSAGE_EXCEPTION(SSLException, "SSL exception: ")
PREFIXED_MESSAGE_EXCEPTION(DateTimeOutOfRangeException, "DateTime is out of range : ")

TypeMismatchException::TypeMismatchException() : Exception("type mismatch") {}

TypeMismatchException::TypeMismatchException(const String& message)
    : Exception(String("type mismatch: ") + message)
{}

TypeMismatchException::TypeMismatchException(const MessageLoaderParms& msgParms) : Exception(msgParms) {}

//
// CIMException (the forms with error instances are in CIMExceptionErrors.cpp)
//

CIMException::CIMException(CIMStatusCode code, const String& message) : Exception(message), _code(code) {}

CIMException::CIMException(CIMStatusCode code, const MessageLoaderParms& msgParms)
    : Exception(msgParms), _code(code)
{}

CIMException::CIMException(const CIMException& cimException)
    : Exception(cimException), _code(cimException._code), _errors(cimException._errors)
{}

CIMException& CIMException::operator=(const CIMException& cimException)
{
    Exception::operator=(cimException);
    _code = cimException._code;
    _errors = cimException._errors;
    return *this;
}

CIMException::~CIMException() {}

CIMStatusCode CIMException::getCode() const
{
    return _code;
}

Uint32 CIMException::getErrorCount() const
{
    return _errors ? _errors->size() : 0;
}

PEGASUS_NAMESPACE_END
