// The exceptions providers and clients throw: each provider exception fixes
// its status code and keeps the message as given; client exceptions describe
// the broken exchange.
#include <Pegasus/Provider/ProviderException.h>
#include <Pegasus/Client/CIMClientException.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

#include <gtest/gtest.h>

#include <functional>

PEGASUS_USING_PEGASUS;

namespace
{

struct ProviderExceptionCase
{
    const char* name;
    std::function<void(const String&)> raise;
    CIMStatusCode code;
};

template <class E>
std::function<void(const String&)> raiser()
{
    return [](const String& message) { throw E(message); };
}

}  // namespace

TEST(ProviderExceptionTest, EachFixesItsCodeAndKeepsTheMessage)
{
    const ProviderExceptionCase cases[] = {
        {"CIMOperationFailedException", raiser<CIMOperationFailedException>(), CIM_ERR_FAILED},
        {"CIMAccessDeniedException", raiser<CIMAccessDeniedException>(), CIM_ERR_ACCESS_DENIED},
        {"CIMInvalidParameterException", raiser<CIMInvalidParameterException>(), CIM_ERR_INVALID_PARAMETER},
        {"CIMObjectNotFoundException", raiser<CIMObjectNotFoundException>(), CIM_ERR_NOT_FOUND},
        {"CIMNotSupportedException", raiser<CIMNotSupportedException>(), CIM_ERR_NOT_SUPPORTED},
        {"CIMObjectAlreadyExistsException", raiser<CIMObjectAlreadyExistsException>(),
            CIM_ERR_ALREADY_EXISTS},
        {"CIMPropertyNotFoundException", raiser<CIMPropertyNotFoundException>(), CIM_ERR_NO_SUCH_PROPERTY},
        {"CIMMethodNotFoundException", raiser<CIMMethodNotFoundException>(), CIM_ERR_METHOD_NOT_FOUND},
    };
    const String message = "ZDA_ReplicationService does not support createInstance.";
    for (const ProviderExceptionCase& c : cases)
    {
        SCOPED_TRACE(c.name);
        // A server catches CIMException first: every provider exception must
        // arrive there with its code and the message untouched.
        try
        {
            c.raise(message);
            ADD_FAILURE() << "nothing thrown";
        }
        catch (const CIMOperationFailedException& e)
        {
            const CIMException& asCIM = e;
            EXPECT_EQ(c.code, asCIM.getCode());
            EXPECT_EQ(message, asCIM.getMessage());
            // The error description a client receives.
            EXPECT_EQ(String(cimStatusCodeToString(c.code)) + ": " + message,
                TraceableCIMException(asCIM).getDescription());
        }
    }
}

TEST(CIMClientExceptionTest, HttpErrorDescribesStatusAndCIMError)
{
    CIMClientHTTPErrorException full(400, "Bad Request", "request-not-valid", "no CIMOperation header");
    EXPECT_EQ(400u, full.getCode());
    EXPECT_EQ(String("request-not-valid"), full.getCIMError());
    EXPECT_EQ(String("400 Bad Request, CIMError: request-not-valid, detail: no CIMOperation header"),
        full.getMessage());

    CIMClientHTTPErrorException bare(401, "Unauthorized", String(), String());
    EXPECT_EQ(String("401 Unauthorized"), bare.getMessage());

    const Exception& asException = CIMClientXmlException("unexpected element FOO");
    EXPECT_EQ(String("unexpected element FOO"), asException.getMessage());
}
