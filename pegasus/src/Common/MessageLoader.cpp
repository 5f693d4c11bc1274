#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/Formatter.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

//
// Formatter
//

String Formatter::Arg::toString() const
{
    char buffer[64];
    switch (_type)
    {
    case VOIDT: return String();
    case STRING: return _string;
    case BOOLEAN: return String(_boolean ? "true" : "false");
    case INTEGER: snprintf(buffer, sizeof(buffer), "%d", _integer); break;
    case UINTEGER: snprintf(buffer, sizeof(buffer), "%u", _uinteger); break;
    case LINTEGER: snprintf(buffer, sizeof(buffer), "%lld", _lInteger); break;
    case ULINTEGER: snprintf(buffer, sizeof(buffer), "%llu", _lUInteger); break;
    case REAL: snprintf(buffer, sizeof(buffer), "%.16g", _real); break;
    }
    return String(buffer);
}

String Formatter::format(const String& formatString, const Arg& arg0, const Arg& arg1, const Arg& arg2,
    const Arg& arg3, const Arg& arg4, const Arg& arg5, const Arg& arg6, const Arg& arg7, const Arg& arg8,
    const Arg& arg9)
{
    const Arg* args[] = {&arg0, &arg1, &arg2, &arg3, &arg4, &arg5, &arg6, &arg7, &arg8, &arg9};
    String result;
    Uint32 n = formatString.size();
    for (Uint32 i = 0; i < n; i++)
    {
        Char16 c = formatString[i];
        if (c == '\\' && i + 1 < n)
        {
            result.append(formatString[++i]);
        }
        else if (c == '$' && i + 1 < n && formatString[i + 1] >= '0' && formatString[i + 1] <= '9')
        {
            result.append(args[Uint16(formatString[i + 1]) - '0']->toString());
            i++;
        }
        else
            result.append(c);
    }
    return result;
}

//
// MessageLoaderParms
//

MessageLoaderParms::MessageLoaderParms()
    : msg_src_path(nullptr), useProcessLocale(false), useThreadLocale(true)
{}

MessageLoaderParms::MessageLoaderParms(const String& id, const String& msg, const Formatter::Arg& a0,
    const Formatter::Arg& a1, const Formatter::Arg& a2, const Formatter::Arg& a3, const Formatter::Arg& a4,
    const Formatter::Arg& a5, const Formatter::Arg& a6, const Formatter::Arg& a7, const Formatter::Arg& a8,
    const Formatter::Arg& a9)
    : msg_id(id), default_msg(msg), msg_src_path(nullptr), useProcessLocale(false), useThreadLocale(true),
      arg0(a0), arg1(a1), arg2(a2), arg3(a3), arg4(a4), arg5(a5), arg6(a6), arg7(a7), arg8(a8), arg9(a9)
{}

MessageLoaderParms::MessageLoaderParms(const char* id, const char* msg, const Formatter::Arg& a0,
    const Formatter::Arg& a1, const Formatter::Arg& a2, const Formatter::Arg& a3, const Formatter::Arg& a4,
    const Formatter::Arg& a5, const Formatter::Arg& a6, const Formatter::Arg& a7, const Formatter::Arg& a8,
    const Formatter::Arg& a9)
    : MessageLoaderParms(String(id), String(msg), a0, a1, a2, a3, a4, a5, a6, a7, a8, a9)
{}

String MessageLoaderParms::toString()
{
    String s("msg_id = ");
    s.append(msg_id);
    s.append(String("\ndefault_msg = "));
    s.append(default_msg);
    return s;
}

//
// MessageLoader
//

String MessageLoader::getMessage(MessageLoaderParms& parms)
{
    parms.contentlanguages.clear();
    parms.contentlanguages.append(LanguageTag(String("en")));
    return Formatter::format(parms.default_msg, parms.arg0, parms.arg1, parms.arg2, parms.arg3, parms.arg4,
        parms.arg5, parms.arg6, parms.arg7, parms.arg8, parms.arg9);
}

String MessageLoader::getMessage2(MessageLoaderParms& parms)
{
    return getMessage(parms);
}

PEGASUS_NAMESPACE_END
