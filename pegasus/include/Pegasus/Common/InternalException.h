// Exceptions used inside the object model and by servers and providers that
// want the throwing source position recorded. MessageLoader.h must be
// included before this header: the header does not include it itself, and
// refusing the other order here keeps code that builds against this SDK
// building against the OpenPegasus headers as well.
#ifndef Pegasus_InternalException_h
#define Pegasus_InternalException_h

#ifndef Pegasus_MessageLoader_h
#error "include <Pegasus/Common/MessageLoader.h> before <Pegasus/Common/InternalException.h>"
#endif

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/ContentLanguageList.h>

PEGASUS_NAMESPACE_BEGIN

// A property named as required (for example a key property) is missing.
class PEGASUS_COMMON_LINKAGE NoSuchProperty : public Exception
{
public:
    NoSuchProperty(const String& message);
    NoSuchProperty(const MessageLoaderParms& msgParms);
};

// A CIMException that records the source file and line that threw it.
// File and line are for traces and logs only; getMessage() is the message
// as given and getCode() the code, as for CIMException.
class PEGASUS_COMMON_LINKAGE TraceableCIMException : public CIMException
{
public:
    TraceableCIMException(CIMStatusCode code, const String& message, const String& file, Uint32 line);
    TraceableCIMException(
        CIMStatusCode code, const MessageLoaderParms& parms, const String& file, Uint32 line);
    TraceableCIMException(const ContentLanguageList& langs, CIMStatusCode code, const String& message,
        const String& file, Uint32 line);
    TraceableCIMException(const CIMException& cimException);

    // "<CIM_ERR_NAME>: <message>", or just the name when the message is
    // empty; for a code without a name: Unrecognized CIM status code "<n>".
    String getDescription() const;
    // "<file>(<line>): " followed by the description.
    String getTraceDescription() const;

    String getCIMMessage() const;
    void setCIMMessage(const String& cimMessage);
    String getFile() const;
    Uint32 getLine() const;
    const ContentLanguageList& getContentLanguages() const;

private:
    String _cimMessage;
    String _file;
    Uint32 _line;
};

#define PEGASUS_CIM_EXCEPTION(CODE, EXTRA_MESSAGE)                                                           \
    TraceableCIMException(CODE, EXTRA_MESSAGE, String(__FILE__), __LINE__)

#define PEGASUS_CIM_EXCEPTION_LANG(LANGS, CODE, EXTRA_MESSAGE)                                               \
    TraceableCIMException(LANGS, CODE, EXTRA_MESSAGE, String(__FILE__), __LINE__)

#define PEGASUS_CIM_EXCEPTION_L(CODE, MSG_PARMS)                                                             \
    TraceableCIMException(CODE, MSG_PARMS, String(__FILE__), __LINE__)

PEGASUS_NAMESPACE_END

#endif
