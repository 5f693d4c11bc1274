// The exception classes of the object model.
//
// Exception is the root; it does not derive from std::exception, so code
// that catches both must catch Exception first or separately. CIMException
// carries a CIM status code and is what an operation reports to a client;
// every other Exception class is a local error (a server reports it as
// CIM_ERR_FAILED with the exception's message).
#ifndef Pegasus_Exception_h
#define Pegasus_Exception_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/CIMStatusCode.h>
#include <Pegasus/Common/ContentLanguageList.h>
#include <Pegasus/Common/Array.h>

PEGASUS_NAMESPACE_BEGIN

class MessageLoaderParms;
class CIMInstance;
class CIMConstInstance;

class PEGASUS_COMMON_LINKAGE Exception
{
public:
    Exception(const String& message);
    Exception(const MessageLoaderParms& msgParms);
    Exception(const Exception& exception);
    Exception& operator=(const Exception& exception);
    virtual ~Exception();

    virtual const String& getMessage() const;
    const ContentLanguageList& getContentLanguages() const;
    void setContentLanguages(const ContentLanguageList& langs);

protected:
    Exception();

    String _message;
    ContentLanguageList _contentLanguages;
};

// A null pointer was passed where a value is required.
class PEGASUS_COMMON_LINKAGE NullPointer : public Exception
{
public:
    NullPointer();
};

class PEGASUS_COMMON_LINKAGE IndexOutOfBoundsException : public Exception
{
public:
    IndexOutOfBoundsException();
};

class PEGASUS_COMMON_LINKAGE AlreadyExistsException : public Exception
{
public:
    AlreadyExistsException(const String& message);
    AlreadyExistsException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidNameException : public Exception
{
public:
    InvalidNameException(const String& name);
    InvalidNameException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidNamespaceNameException : public Exception
{
public:
    InvalidNamespaceNameException(const String& name);
    InvalidNamespaceNameException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE UninitializedObjectException : public Exception
{
public:
    UninitializedObjectException();
};

class PEGASUS_COMMON_LINKAGE TypeMismatchException : public Exception
{
public:
    TypeMismatchException();
    TypeMismatchException(const String& message);
    TypeMismatchException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE DynamicCastFailedException : public Exception
{
public:
    DynamicCastFailedException();
};

class PEGASUS_COMMON_LINKAGE InvalidDateTimeFormatException : public Exception
{
public:
    InvalidDateTimeFormatException();
};

class PEGASUS_COMMON_LINKAGE MalformedObjectNameException : public Exception
{
public:
    MalformedObjectNameException(const String& objectName);
    MalformedObjectNameException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE BindFailedException : public Exception
{
public:
    BindFailedException(const String& message);
    BindFailedException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidLocatorException : public Exception
{
public:
    InvalidLocatorException(const String& message);
    InvalidLocatorException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE CannotCreateSocketException : public Exception
{
public:
    CannotCreateSocketException();
};

class PEGASUS_COMMON_LINKAGE CannotConnectException : public Exception
{
public:
    CannotConnectException(const String& message);
    CannotConnectException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE AlreadyConnectedException : public Exception
{
public:
    AlreadyConnectedException();
};

class PEGASUS_COMMON_LINKAGE NotConnectedException : public Exception
{
public:
    NotConnectedException();
};

class PEGASUS_COMMON_LINKAGE ConnectionTimeoutException : public Exception
{
public:
    ConnectionTimeoutException();
};

class PEGASUS_COMMON_LINKAGE SSLException : public Exception
{
public:
    SSLException(const String& message);
    SSLException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE DateTimeOutOfRangeException : public Exception
{
public:
    DateTimeOutOfRangeException(const String& message);
    DateTimeOutOfRangeException(const MessageLoaderParms& msgParms);
};

class PEGASUS_COMMON_LINKAGE InvalidEnumerationContextException : public Exception
{
public:
    InvalidEnumerationContextException();
};

// An error with a CIM status code. getMessage() is the message exactly as
// given, without the status code's name.
//
// The third parameter is a list of error instances; there is no Boolean
// form. Because Array<CIMInstance>(Uint32) is not explicit, a call
// CIMException(code, msg, true) compiles and attaches one uninitialized
// instance, and false attaches none. Whoever serialises the error
// instances must skip uninitialized entries.
class PEGASUS_COMMON_LINKAGE CIMException : public Exception
{
public:
    CIMException(CIMStatusCode code = CIM_ERR_SUCCESS, const String& message = String::EMPTY);
    CIMException(CIMStatusCode code, const String& message, const CIMInstance& instance);
    CIMException(CIMStatusCode code, const String& message, const Array<CIMInstance>& instances);
    CIMException(CIMStatusCode code, const MessageLoaderParms& msgParms);
    CIMException(const CIMException& cimException);
    CIMException& operator=(const CIMException& cimException);
    virtual ~CIMException();

    CIMStatusCode getCode() const;

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    Uint32 getErrorCount() const;
    // Out of range throws IndexOutOfBoundsException.
    CIMConstInstance getError(Uint32 index) const;
    void addError(const CIMInstance& instance);
#endif

protected:
    CIMStatusCode _code;
    // Error instances, shared between copies and replaced on addError, so
    // that copying an exception never needs the complete CIMInstance type.
    std::shared_ptr<const Array<CIMInstance>> _errors;
};

PEGASUS_NAMESPACE_END

#endif
