#include <Pegasus/Client/CIMClientException.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

String httpErrorMessage(
    Uint32 httpStatus, const String& reasonPhrase, const String& cimError, const String& cimErrorDetail)
{
    String message;
    message.appendPrintf("%u", httpStatus);
    if (reasonPhrase.size())
        message.append(String(" ")).append(reasonPhrase);
    if (cimError.size())
        message.append(String(", CIMError: ")).append(cimError);
    if (cimErrorDetail.size())
        message.append(String(", detail: ")).append(cimErrorDetail);
    return message;
}

}  // namespace

CIMClientMalformedHTTPException::CIMClientMalformedHTTPException(const String& message) : Exception(message)
{}

CIMClientHTTPErrorException::CIMClientHTTPErrorException(
    Uint32 httpStatus, const String& reasonPhrase, const String& cimError, const String& cimErrorDetail)
    : Exception(httpErrorMessage(httpStatus, reasonPhrase, cimError, cimErrorDetail)),
      _httpStatus(httpStatus), _reasonPhrase(reasonPhrase), _cimError(cimError),
      _cimErrorDetail(cimErrorDetail)
{}

CIMClientHTTPErrorException::CIMClientHTTPErrorException(
    const CIMClientHTTPErrorException& httpError) = default;

CIMClientHTTPErrorException::~CIMClientHTTPErrorException() {}

CIMClientHTTPErrorException& CIMClientHTTPErrorException::operator=(
    const CIMClientHTTPErrorException& httpError) = default;

Uint32 CIMClientHTTPErrorException::getCode() const
{
    return _httpStatus;
}
String CIMClientHTTPErrorException::getReasonPhrase() const
{
    return _reasonPhrase;
}
String CIMClientHTTPErrorException::getCIMError() const
{
    return _cimError;
}
String CIMClientHTTPErrorException::getCIMErrorDetail() const
{
    return _cimErrorDetail;
}

CIMClientXmlException::CIMClientXmlException(const String& message) : Exception(message) {}

CIMClientResponseException::CIMClientResponseException(const String& message) : Exception(message) {}

PEGASUS_NAMESPACE_END
