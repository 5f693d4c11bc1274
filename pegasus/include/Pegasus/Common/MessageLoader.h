// Message texts with their identifiers and arguments.
//
// The SDK has no message catalogues: a message is always its default text
// with the arguments substituted, in the content language "en".
#ifndef Pegasus_MessageLoader_h
#define Pegasus_MessageLoader_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Formatter.h>
#include <Pegasus/Common/ContentLanguageList.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE MessageLoaderParms
{
public:
    String msg_id;       // identifier of the message in a catalogue
    String default_msg;  // text used when no catalogue has the message
    const char* msg_src_path;
    Boolean useProcessLocale;
    Boolean useThreadLocale;
    ContentLanguageList contentlanguages;  // set by MessageLoader::getMessage
    Formatter::Arg arg0, arg1, arg2, arg3, arg4, arg5, arg6, arg7, arg8, arg9;

    MessageLoaderParms();
    MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& arg0 = Formatter::Arg(),
        const Formatter::Arg& arg1 = Formatter::Arg(), const Formatter::Arg& arg2 = Formatter::Arg(),
        const Formatter::Arg& arg3 = Formatter::Arg(), const Formatter::Arg& arg4 = Formatter::Arg(),
        const Formatter::Arg& arg5 = Formatter::Arg(), const Formatter::Arg& arg6 = Formatter::Arg(),
        const Formatter::Arg& arg7 = Formatter::Arg(), const Formatter::Arg& arg8 = Formatter::Arg(),
        const Formatter::Arg& arg9 = Formatter::Arg());
    MessageLoaderParms(const char* id, const char* msg, const Formatter::Arg& arg0 = Formatter::Arg(),
        const Formatter::Arg& arg1 = Formatter::Arg(), const Formatter::Arg& arg2 = Formatter::Arg(),
        const Formatter::Arg& arg3 = Formatter::Arg(), const Formatter::Arg& arg4 = Formatter::Arg(),
        const Formatter::Arg& arg5 = Formatter::Arg(), const Formatter::Arg& arg6 = Formatter::Arg(),
        const Formatter::Arg& arg7 = Formatter::Arg(), const Formatter::Arg& arg8 = Formatter::Arg(),
        const Formatter::Arg& arg9 = Formatter::Arg());

    String toString();
};

class PEGASUS_COMMON_LINKAGE MessageLoader
{
public:
    // The formatted text of parms; sets parms.contentlanguages.
    static String getMessage(MessageLoaderParms& parms);
    // Same as getMessage: there is no catalogue to consult.
    static String getMessage2(MessageLoaderParms& parms);
};

PEGASUS_NAMESPACE_END

#endif
