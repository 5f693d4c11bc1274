#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

#include <cstdio>

PEGASUS_NAMESPACE_BEGIN

NoSuchProperty::NoSuchProperty(const String& message) : Exception(String("No such property: ") + message) {}

NoSuchProperty::NoSuchProperty(const MessageLoaderParms& msgParms) : Exception(msgParms) {}

TraceableCIMException::TraceableCIMException(
    CIMStatusCode code, const String& message, const String& file, Uint32 line)
    : CIMException(code, message), _file(file), _line(line)
{}

TraceableCIMException::TraceableCIMException(
    CIMStatusCode code, const MessageLoaderParms& parms, const String& file, Uint32 line)
    : CIMException(code, parms), _file(file), _line(line)
{}

TraceableCIMException::TraceableCIMException(const ContentLanguageList& langs, CIMStatusCode code,
    const String& message, const String& file, Uint32 line)
    : CIMException(code, message), _file(file), _line(line)
{
    setContentLanguages(langs);
}

TraceableCIMException::TraceableCIMException(const CIMException& cimException)
    : CIMException(cimException), _line(0)
{
    const TraceableCIMException* traceable = dynamic_cast<const TraceableCIMException*>(&cimException);
    if (traceable)
    {
        _cimMessage = traceable->_cimMessage;
        _file = traceable->_file;
        _line = traceable->_line;
    }
}

String TraceableCIMException::getDescription() const
{
    const char* name = cimStatusCodeToString(_code);
    String description;
    if (String::equal(String(name), String("Unrecognized CIM status code")))
        description.appendPrintf("%s \"%u\"", name, static_cast<unsigned int>(_code));
    else
        description = String(name);
    if (getMessage().size())
    {
        description.append(String(": "));
        description.append(getMessage());
    }
    return description;
}

String TraceableCIMException::getTraceDescription() const
{
    String trace(_file);
    trace.appendPrintf("(%u): ", _line);
    trace.append(getDescription());
    return trace;
}

String TraceableCIMException::getCIMMessage() const
{
    return _cimMessage;
}

void TraceableCIMException::setCIMMessage(const String& cimMessage)
{
    _cimMessage = cimMessage;
}

String TraceableCIMException::getFile() const
{
    return _file;
}

Uint32 TraceableCIMException::getLine() const
{
    return _line;
}

const ContentLanguageList& TraceableCIMException::getContentLanguages() const
{
    return Exception::getContentLanguages();
}

PEGASUS_NAMESPACE_END
