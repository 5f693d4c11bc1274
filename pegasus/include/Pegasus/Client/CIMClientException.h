// Failures of a CIMClient exchange below the CIM level: the server's HTTP
// answer was an error, was not well-formed HTTP, carried XML that could not
// be read, or did not answer the request that was sent. Server-side CIM
// errors are CIMException instead; failures to connect are the connection
// exceptions of Exception.h.
#ifndef Pegasus_CIMClientException_h
#define Pegasus_CIMClientException_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Client/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_CLIENT_LINKAGE CIMClientMalformedHTTPException : public Exception
{
public:
    CIMClientMalformedHTTPException(const String& message);
};

// An HTTP status other than success. The message reads
// "<status> <reason phrase>", followed by the CIMError header and its detail
// when the server sent them.
class PEGASUS_CLIENT_LINKAGE CIMClientHTTPErrorException : public Exception
{
public:
    CIMClientHTTPErrorException(
        Uint32 httpStatus, const String& reasonPhrase, const String& cimError, const String& cimErrorDetail);
    CIMClientHTTPErrorException(const CIMClientHTTPErrorException& httpError);
    virtual ~CIMClientHTTPErrorException();
    CIMClientHTTPErrorException& operator=(const CIMClientHTTPErrorException& httpError);

    Uint32 getCode() const;
    String getReasonPhrase() const;
    String getCIMError() const;
    String getCIMErrorDetail() const;

private:
    Uint32 _httpStatus;
    String _reasonPhrase;
    String _cimError;
    String _cimErrorDetail;
};

class PEGASUS_CLIENT_LINKAGE CIMClientXmlException : public Exception
{
public:
    CIMClientXmlException(const String& message);
};

class PEGASUS_CLIENT_LINKAGE CIMClientResponseException : public Exception
{
public:
    CIMClientResponseException(const String& message);
};

PEGASUS_NAMESPACE_END

#endif
