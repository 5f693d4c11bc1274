// Whole messages: the CIM/MESSAGE envelope, method calls and responses.
#include "Elements.h"
#include "OperationTable.h"

#include <Pegasus/Common/Exception.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace cimxml
{

namespace
{
inline bool is(const pugi::xml_node& e, const char* name)
{
    return isElement(e, name);
}

std::string utf8(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

std::string messageOf(const Exception& e)
{
    return utf8(e.getMessage());
}

// ---- envelope ----

void writeEnvelopeStart(XmlWriter& w, const std::string& messageId, const char* kind)
{
    w.lit("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
          "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"");
    w.attrText(messageId.c_str());
    w.lit("\" PROTOCOLVERSION=\"1.0\"><");
    w.raw(kind);
    w.lit(">");
}

void writeEnvelopeEnd(XmlWriter& w, const char* kind)
{
    w.lit("</");
    w.raw(kind);
    w.lit("></MESSAGE></CIM>\n");
}

bool versionIs(const char* version, char major)
{
    return version[0] == major && (version[1] == '\0' || version[1] == '.');
}

// Checks CIM and MESSAGE and returns the element inside MESSAGE.
pugi::xml_node openEnvelope(const pugi::xml_document& doc, std::string& messageId)
{
    pugi::xml_node cim = doc.document_element();
    if (!is(cim, "CIM"))
        invalid(std::string("the document element is ") + cim.name() + ", not CIM");
    if (!versionIs(cim.attribute("CIMVERSION").value(), '2'))
        throw DecodeError(DecodeFailure::UnsupportedCimVersion,
            std::string("CIMVERSION '") + cim.attribute("CIMVERSION").value() + "' is not supported");
    if (!versionIs(cim.attribute("DTDVERSION").value(), '2'))
        throw DecodeError(DecodeFailure::UnsupportedDtdVersion,
            std::string("DTDVERSION '") + cim.attribute("DTDVERSION").value() + "' is not supported");
    pugi::xml_node message = firstElement(cim);
    if (!message || !is(message, "MESSAGE"))
        invalid("CIM without MESSAGE");
    // One message, one body: anything after them would go unanswered.
    if (nextElement(message))
        invalid(std::string("CIM holds ") + nextElement(message).name() + " after its MESSAGE");
    if (!message.attribute("ID"))
        invalid("MESSAGE without ID");
    messageId = message.attribute("ID").value();
    if (!versionIs(message.attribute("PROTOCOLVERSION").value(), '1'))
        throw DecodeError(DecodeFailure::UnsupportedProtocolVersion,
            std::string("PROTOCOLVERSION '") + message.attribute("PROTOCOLVERSION").value() +
                "' is not supported");
    pugi::xml_node body = firstElement(message);
    if (!body)
        invalid("MESSAGE is empty");
    if (is(body, "MULTIREQ") || is(body, "MULTIRSP"))
        throw DecodeError(
            DecodeFailure::MultipleRequests, "multiple operations in one message are not supported");
    if (nextElement(body))
        invalid(std::string("MESSAGE holds ") + nextElement(body).name() + " after its " + body.name());
    return body;
}

// ---- parameters ----

void writeParamValue(XmlWriter& w, const char* element, const CIMParamValue& p)
{
    CIMValue value = p.getValue();
    w.lit("<");
    w.raw(element);
    w.attr("NAME", p.getParameterName());
    if (p.isTyped())
        writeTypeAttributes(w, "PARAMTYPE", value.getType());
    w.lit(">");
    writeValue(w, value);
    w.lit("</");
    w.raw(element);
    w.lit(">");
}

CIMParamValue readParamValue(const pugi::xml_node& e, ReadContext& ctx)
{
    String name = attrString(e, "NAME", true);
    if (name.size() == 0)
        invalid("PARAMVALUE with an empty NAME");
    pugi::xml_node v = firstElement(e);
    CIMType embedded;
    bool isEmbedded = isEmbeddedObject(e, embedded);
    pugi::xml_attribute paramType = e.attribute("PARAMTYPE");
    if (paramType)
    {
        CIMType type;
        if (!parseWireType(paramType.value(), type))
            invalid("PARAMVALUE " + utf8(name) + ": unknown PARAMTYPE '" + paramType.value() + "'");
        if (isEmbedded)
            type = embedded;
        bool isArray = v && (is(v, "VALUE.ARRAY") || is(v, "VALUE.REFARRAY"));
        return CIMParamValue(name, readTypedValue(v, type, isArray, ctx), true);
    }
    if (isEmbedded)
        return CIMParamValue(name, readTypedValue(v, embedded, v && is(v, "VALUE.ARRAY"), ctx), true);
    if (v && is(v, "INSTANCE"))
        return CIMParamValue(name, CIMValue(readInstance(v, ctx)), true);
    if (v && is(v, "VALUE.NAMEDINSTANCE"))
        return CIMParamValue(name, CIMValue(readNamedInstance(v, ctx)), true);
    if (v && is(v, "CLASS"))
        return CIMParamValue(name, CIMValue(CIMObject(readClass(v, ctx))), true);
    if (v && (is(v, "INSTANCENAME") || is(v, "CLASSNAME")))
        return CIMParamValue(name, CIMValue(readAnyPath(v, ctx)), true);
    bool typed;
    CIMValue value = readUntypedValue(v, ctx, typed);
    return CIMParamValue(name, value, typed);
}

// ---- intrinsic parameters ----

void writeIParamValue(XmlWriter& w, const ParamDescriptor& entry, const CIMValue& value)
{
    if (value.isNull())
        return;  // absent and null mean the same
    if (entry.kind == ParamKind::ClassName)
    {
        String s;
        value.get(s);
        if (s.size() == 0)
            return;
    }
    w.lit("<IPARAMVALUE NAME=\"");
    w.raw(entry.name);
    w.lit("\">");
    switch (entry.kind)
    {
    case ParamKind::ClassName:
    {
        String s;
        value.get(s);
        w.lit("<CLASSNAME NAME=\"");
        w.attrText(s);
        w.lit("\"/>");
        break;
    }
    case ParamKind::InstanceName:
    case ParamKind::ObjectName:
    {
        CIMObjectPath path;
        value.get(path);
        if (entry.kind == ParamKind::ObjectName && path.getKeyBindings().size() == 0)
        {
            w.lit("<CLASSNAME NAME=\"");
            w.attrText(path.getClassName().getString());
            w.lit("\"/>");
        }
        else
            writeInstanceName(w, path);
        break;
    }
    case ParamKind::Flag:
    case ParamKind::Text:
    case ParamKind::Count:
    case ParamKind::PropertyList:
    case ParamKind::AnyValue: writeValue(w, value); break;
    case ParamKind::Instance:
    {
        CIMInstance instance;
        value.get(instance);
        writeInstance(w, instance);
        break;
    }
    case ParamKind::NamedInstance:
    {
        CIMInstance instance;
        value.get(instance);
        writeNamedInstance(w, instance);
        break;
    }
    case ParamKind::Class:
    {
        CIMObject object;
        value.get(object);
        writeClass(w, CIMConstClass(object));
        break;
    }
    }
    w.lit("</IPARAMVALUE>");
}

CIMParamValue readIParamValue(const ParamDescriptor& entry, const pugi::xml_node& e, ReadContext& ctx)
{
    pugi::xml_node v = firstElement(e);
    if (!v)
        return defaultParameter(entry);  // a null value: as if absent
    auto expect = [&](const char* name) {
        if (!is(v, name))
            invalid(std::string("expected ") + name + ", found " + v.name());
    };
    switch (entry.kind)
    {
    case ParamKind::ClassName:
        expect("CLASSNAME");
        return CIMParamValue(entry.name, CIMValue(attrName(v, "NAME", true).getString()));
    case ParamKind::InstanceName:
    case ParamKind::ObjectName: return CIMParamValue(entry.name, CIMValue(readAnyPath(v, ctx)));
    case ParamKind::Flag: return CIMParamValue(entry.name, readTypedValue(v, CIMTYPE_BOOLEAN, false, ctx));
    case ParamKind::Text: return CIMParamValue(entry.name, readTypedValue(v, CIMTYPE_STRING, false, ctx));
    case ParamKind::Count: return CIMParamValue(entry.name, readTypedValue(v, CIMTYPE_UINT32, false, ctx));
    case ParamKind::PropertyList:
        return CIMParamValue(entry.name, readTypedValue(v, CIMTYPE_STRING, true, ctx));
    case ParamKind::Instance: return CIMParamValue(entry.name, CIMValue(readInstance(v, ctx)));
    case ParamKind::NamedInstance:
        // Some clients send a bare INSTANCE; the server then has no path.
        return CIMParamValue(
            entry.name, CIMValue(is(v, "INSTANCE") ? readInstance(v, ctx) : readNamedInstance(v, ctx)));
    case ParamKind::Class: return CIMParamValue(entry.name, CIMValue(CIMObject(readClass(v, ctx))));
    case ParamKind::AnyValue:
    {
        bool typed;
        CIMValue value = readUntypedValue(v, ctx, typed);
        return CIMParamValue(entry.name, value, typed);
    }
    }
    invalid("unknown parameter kind");
}

// ---- responses ----

void writeError(XmlWriter& w, const OperationResponse& r)
{
    w.lit("<ERROR CODE=\"");
    w.raw(std::to_string(r.errorCode));
    w.lit("\"");
    if (r.errorDescription.size() > 0)
        w.attr("DESCRIPTION", r.errorDescription);
    w.lit("/>");
}

template <class T>
Array<T> arrayOf(const CIMValue& v)
{
    Array<T> items;
    if (!v.isNull())
        v.get(items);
    return items;
}

template <class T>
T scalarOf(const CIMValue& v)
{
    T item;
    if (!v.isNull())
        v.get(item);
    return item;
}

CIMValue readIntrinsicResult(Intrinsic op, const pugi::xml_node& ret, ReadContext& ctx)
{
    ResultShape shape = resultShape(op);
    std::string where = std::string(intrinsicName(op)) + " response: ";
    auto single = [&](const char* name) {
        pugi::xml_node e = ret ? firstElement(ret) : pugi::xml_node();
        if (!e)
            invalid(where + "no " + name + " returned");
        return e;
    };
    auto each = [&](auto&& read) {
        if (ret)
            for (pugi::xml_node e = firstElement(ret); e; e = nextElement(e))
                read(e);
    };
    switch (shape)
    {
    case ResultShape::Nothing: return CIMValue();
    case ResultShape::Class: return CIMValue(CIMObject(readClass(single("CLASS"), ctx)));
    case ResultShape::Instance: return CIMValue(readInstance(single("INSTANCE"), ctx));
    case ResultShape::InstanceName: return CIMValue(readInstanceName(single("INSTANCENAME"), ctx));
    case ResultShape::Classes:
    {
        Array<CIMObject> items;
        each([&](const pugi::xml_node& e) { items.append(CIMObject(readClass(e, ctx))); });
        return CIMValue(items);
    }
    case ResultShape::ClassNames:
    {
        Array<String> items;
        each([&](const pugi::xml_node& e) {
            if (!is(e, "CLASSNAME"))
                invalid(where + "expected CLASSNAME, found " + e.name());
            items.append(attrName(e, "NAME", true).getString());
        });
        return CIMValue(items);
    }
    case ResultShape::NamedInstances:
    {
        Array<CIMInstance> items;
        each([&](const pugi::xml_node& e) { items.append(readNamedInstance(e, ctx)); });
        return CIMValue(items);
    }
    case ResultShape::InstanceNames:
    {
        Array<CIMObjectPath> items;
        each([&](const pugi::xml_node& e) { items.append(readInstanceName(e, ctx)); });
        return CIMValue(items);
    }
    case ResultShape::ObjectsWithPath:
    {
        Array<CIMObject> items;
        each([&](const pugi::xml_node& e) { items.append(readObjectWithPath(e, ctx)); });
        return CIMValue(items);
    }
    case ResultShape::ObjectPaths:
    {
        Array<CIMObjectPath> items;
        each([&](const pugi::xml_node& e) { items.append(readAnyPath(e, ctx)); });
        return CIMValue(items);
    }
    case ResultShape::PropertyValue:
    {
        bool typed;
        return readUntypedValue(ret ? firstElement(ret) : pugi::xml_node(), ctx, typed);
    }
    case ResultShape::InstancesWithPath:
    {
        Array<CIMInstance> items;
        each([&](const pugi::xml_node& e) {
            if (!is(e, "VALUE.INSTANCEWITHPATH"))
                invalid(where + "expected VALUE.INSTANCEWITHPATH, found " + e.name());
            pugi::xml_node path = firstElement(e);
            pugi::xml_node instance = path ? nextElement(path) : pugi::xml_node();
            if (!instance)
                invalid(where + "VALUE.INSTANCEWITHPATH without INSTANCEPATH and INSTANCE");
            CIMInstance item = readInstance(instance, ctx);
            item.setPath(readAnyPath(path, ctx));
            items.append(item);
        });
        return CIMValue(items);
    }
    case ResultShape::InstancePaths:
    {
        Array<CIMObjectPath> items;
        each([&](const pugi::xml_node& e) { items.append(readAnyPath(e, ctx)); });
        return CIMValue(items);
    }
    }
    return CIMValue();
}

}  // namespace

// ---- requests ----

void encodeRequest(const OperationRequest& request, Sink& sink)
{
    XmlWriter w(sink);
    writeEnvelopeStart(w, request.messageId, "SIMPLEREQ");
    if (request.intrinsic)
    {
        const OperationDescriptor& entry = operationDescriptor(request.operation);
        w.lit("<IMETHODCALL NAME=\"");
        w.raw(entry.name);
        w.lit("\">");
        writeLocalNamespacePath(w, request.nameSpace);
        for (unsigned i = 0; i < entry.paramCount; i++)
        {
            const CIMParamValue* p = request.find(entry.params[i].name);
            if (p)
                writeIParamValue(w, entry.params[i], p->getValue());
        }
        w.lit("</IMETHODCALL>");
    }
    else
    {
        w.lit("<METHODCALL");
        w.attr("NAME", request.methodName.getString());
        w.lit(">");
        writeLocalObjectPath(w, request.nameSpace, request.target);
        for (Uint32 i = 0; i < request.parameters.size(); i++)
            writeParamValue(w, "PARAMVALUE", request.parameters[i]);
        w.lit("</METHODCALL>");
    }
    writeEnvelopeEnd(w, "SIMPLEREQ");
    w.flush();
}

OperationRequest decodeRequest(const char* data, std::size_t size, const DecodeLimits& limits)
{
    pugi::xml_document doc;
    parseDocument(doc, data, size, limits);
    OperationRequest request;
    pugi::xml_node body = openEnvelope(doc, request.messageId);
    if (!is(body, "SIMPLEREQ"))
        invalid(std::string("MESSAGE holds ") + body.name() + ", not SIMPLEREQ");
    // CORRELATOR elements may precede the call; they carry nothing we use.
    pugi::xml_node call = firstElement(body);
    while (call && is(call, "CORRELATOR"))
        call = nextElement(call);
    if (!call || (!is(call, "IMETHODCALL") && !is(call, "METHODCALL")))
        invalid("SIMPLEREQ without IMETHODCALL or METHODCALL");
    if (nextElement(call))
        invalid(std::string("SIMPLEREQ holds ") + nextElement(call).name() + " after its " + call.name());
    std::string name = call.attribute("NAME").value();
    if (name.empty())
        invalid(std::string(call.name()) + " without NAME");
    request.intrinsic = is(call, "IMETHODCALL");
    ReadContext ctx{limits};

    auto refuse = [&](Uint32 code, const std::string& message) {
        throw RequestRefused(code, message, request.messageId, name, request.intrinsic);
    };
    try
    {
        if (request.intrinsic)
        {
            if (!findIntrinsic(name, request.operation))
                refuse(CIM_ERR_NOT_SUPPORTED, "operation " + name + " is not supported");
            const OperationDescriptor& entry = operationDescriptor(request.operation);
            pugi::xml_node e = firstElement(call);
            if (!e || !is(e, "LOCALNAMESPACEPATH"))
                invalid("IMETHODCALL without LOCALNAMESPACEPATH");
            request.nameSpace = readLocalNamespacePath(e);
            std::vector<bool> seen(entry.paramCount, false);
            Array<CIMParamValue> given(entry.paramCount, CIMParamValue());
            for (e = nextElement(e); e; e = nextElement(e))
            {
                if (!is(e, "IPARAMVALUE"))
                    invalid(std::string("IMETHODCALL holds ") + e.name());
                std::string pname = e.attribute("NAME").value();
                unsigned k = 0;
                while (k < entry.paramCount && pname != entry.params[k].name)
                    k++;
                if (k == entry.paramCount)
                    refuse(CIM_ERR_INVALID_PARAMETER, name + " has no parameter '" + pname + "'");
                if (seen[k])
                    refuse(CIM_ERR_INVALID_PARAMETER, "parameter " + pname + " given twice");
                seen[k] = true;
                try
                {
                    given[k] = readIParamValue(entry.params[k], e, ctx);
                }
                catch (const DecodeError& bad)
                {
                    if (bad.failure != DecodeFailure::NotValid)
                        throw;
                    refuse(CIM_ERR_INVALID_PARAMETER, "parameter " + pname + ": " + bad.what());
                }
                catch (const Exception& bad)
                {
                    refuse(CIM_ERR_INVALID_PARAMETER, "parameter " + pname + ": " + messageOf(bad));
                }
            }
            for (unsigned k = 0; k < entry.paramCount; k++)
            {
                const ParamDescriptor& p = entry.params[k];
                if (!seen[k] || given[k].getValue().isNull())
                {
                    if (p.required)
                        refuse(
                            CIM_ERR_INVALID_PARAMETER, std::string("parameter ") + p.name + " is required");
                    request.parameters.append(defaultParameter(p));
                }
                else
                    request.parameters.append(given[k]);
            }
        }
        else
        {
            if (!CIMName::legal(String(name.c_str())))
                invalid("METHODCALL NAME '" + name + "' is not a valid method name");
            request.methodName = CIMName(String(name.c_str()));
            pugi::xml_node e = firstElement(call);
            if (!e || (!is(e, "LOCALCLASSPATH") && !is(e, "LOCALINSTANCEPATH")))
                invalid("METHODCALL without LOCALCLASSPATH or LOCALINSTANCEPATH");
            CIMObjectPath target = readAnyPath(e, ctx);
            request.nameSpace = target.getNameSpace();
            target.setNameSpace(CIMNamespaceName());
            request.target = target;
            for (e = nextElement(e); e; e = nextElement(e))
            {
                if (!is(e, "PARAMVALUE"))
                    invalid(std::string("METHODCALL holds ") + e.name());
                try
                {
                    request.parameters.append(readParamValue(e, ctx));
                }
                catch (const DecodeError& bad)
                {
                    if (bad.failure != DecodeFailure::NotValid)
                        throw;
                    refuse(CIM_ERR_INVALID_PARAMETER,
                        std::string("parameter ") + e.attribute("NAME").value() + ": " + bad.what());
                }
            }
        }
    }
    catch (const Exception& bad)
    {
        // The object model refused a name or value the reader passed on.
        throw DecodeError(DecodeFailure::NotValid, messageOf(bad));
    }
    return request;
}

// ---- responses ----

namespace
{
// Refusals quote what the client sent; never let that text fail again.
String lossyString(const std::string& utf8)
{
    try
    {
        return String(utf8.data(), Uint32(utf8.size()));
    }
    catch (const Exception&)
    {
        std::string ascii;
        for (char c : utf8)
            ascii += (static_cast<unsigned char>(c) & 0x80) ? '?' : c;
        return String(ascii.data(), Uint32(ascii.size()));
    }
}
}  // namespace

OperationResponse RequestRefused::response() const
{
    OperationResponse r;
    r.messageId = messageId;
    // An intrinsic call is answered as one even when the operation is
    // unknown, so that the client reads the error instead of failing on the
    // envelope.
    r.intrinsic = intrinsic;
    if (!intrinsic || !findIntrinsic(methodName, r.operation))
    {
        String name = lossyString(methodName);
        // The response names the operation; one the client misspelt cannot
        // be echoed as a name, so a placeholder stands in.
        r.methodName = CIMName::legal(name) ? CIMName(name) : CIMName("InvalidMethodName");
    }
    r.errorCode = code;
    r.errorDescription = lossyString(what());
    return r;
}

void encodeResponse(const OperationResponse& r, Sink& sink)
{
    if (r.intrinsic && !r.isError())
    {
        ResponseWriter writer(sink, r.messageId, r.operation);
        writer.begin();
        const CIMValue& v = r.returnValue;
        switch (resultShape(r.operation))
        {
        case ResultShape::Nothing: break;
        case ResultShape::Class: writer.addClass(CIMClass(scalarOf<CIMObject>(v))); break;
        case ResultShape::Instance: writer.addInstance(scalarOf<CIMInstance>(v)); break;
        case ResultShape::InstanceName: writer.addInstanceName(scalarOf<CIMObjectPath>(v)); break;
        case ResultShape::PropertyValue: writer.addValue(v); break;
        case ResultShape::Classes:
        {
            Array<CIMObject> items = arrayOf<CIMObject>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addClass(CIMClass(items[i]));
            break;
        }
        case ResultShape::ClassNames:
        {
            Array<String> items = arrayOf<String>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addClassName(CIMName(items[i]));
            break;
        }
        case ResultShape::NamedInstances:
        {
            Array<CIMInstance> items = arrayOf<CIMInstance>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addInstance(items[i]);
            break;
        }
        case ResultShape::InstanceNames:
        case ResultShape::ObjectPaths:
        {
            Array<CIMObjectPath> items = arrayOf<CIMObjectPath>(v);
            for (Uint32 i = 0; i < items.size(); i++)
            {
                if (resultShape(r.operation) == ResultShape::InstanceNames)
                    writer.addInstanceName(items[i]);
                else
                    writer.addObjectPath(items[i]);
            }
            break;
        }
        case ResultShape::ObjectsWithPath:
        {
            Array<CIMObject> items = arrayOf<CIMObject>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addObject(items[i]);
            break;
        }
        case ResultShape::InstancesWithPath:
        {
            Array<CIMInstance> items = arrayOf<CIMInstance>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addEncoded(encodeInstanceWithPath(items[i], items[i].getPath()));
            break;
        }
        case ResultShape::InstancePaths:
        {
            Array<CIMObjectPath> items = arrayOf<CIMObjectPath>(v);
            for (Uint32 i = 0; i < items.size(); i++)
                writer.addEncoded(encodeInstancePath(items[i]));
            break;
        }
        }
        writer.finish(r.outParameters);
        return;
    }

    XmlWriter w(sink);
    writeEnvelopeStart(w, r.messageId, "SIMPLERSP");
    const char* element = r.intrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE";
    w.lit("<");
    w.raw(element);
    w.attr("NAME", r.name());
    w.lit(">");
    if (r.isError())
        writeError(w, r);
    else
    {
        if (!r.returnValue.isNull())
        {
            w.lit("<RETURNVALUE");
            writeTypeAttributes(w, "PARAMTYPE", r.returnValue.getType());
            w.lit(">");
            writeValue(w, r.returnValue);
            w.lit("</RETURNVALUE>");
        }
        for (Uint32 i = 0; i < r.outParameters.size(); i++)
            writeParamValue(w, "PARAMVALUE", r.outParameters[i]);
    }
    w.lit("</");
    w.raw(element);
    w.lit(">");
    writeEnvelopeEnd(w, "SIMPLERSP");
    w.flush();
}

namespace
{
OperationResponse readResponse(const pugi::xml_document& doc, const DecodeLimits& limits);
}

OperationResponse decodeResponse(const char* data, std::size_t size, const DecodeLimits& limits)
{
    pugi::xml_document doc;
    parseDocument(doc, data, size, limits);
    return readResponse(doc, limits);
}

OperationResponse decodeResponseInPlace(char* data, std::size_t size, const DecodeLimits& limits)
{
    pugi::xml_document doc;
    parseDocument(doc, data, size, limits, data);
    return readResponse(doc, limits);
}

namespace
{
OperationResponse readResponse(const pugi::xml_document& doc, const DecodeLimits& limits)
{
    OperationResponse response;
    pugi::xml_node body = openEnvelope(doc, response.messageId);
    if (!is(body, "SIMPLERSP"))
        invalid(std::string("MESSAGE holds ") + body.name() + ", not SIMPLERSP");
    pugi::xml_node rsp = firstElement(body);
    if (!rsp || (!is(rsp, "IMETHODRESPONSE") && !is(rsp, "METHODRESPONSE")))
        invalid("SIMPLERSP without IMETHODRESPONSE or METHODRESPONSE");
    std::string name = rsp.attribute("NAME").value();
    response.intrinsic = is(rsp, "IMETHODRESPONSE");
    ReadContext ctx{limits};
    try
    {
        pugi::xml_node first = firstElement(rsp);
        if (response.intrinsic)
        {
            // An operation the codec does not know can only have been
            // refused.
            if (!findIntrinsic(name, response.operation))
            {
                if (!first || !is(first, "ERROR") || !CIMName::legal(String(name.c_str())))
                    invalid("response to an unknown operation '" + name + "'");
                response.methodName = CIMName(String(name.c_str()));
            }
        }
        else
        {
            if (!CIMName::legal(String(name.c_str())))
                invalid("METHODRESPONSE NAME '" + name + "' is not a valid method name");
            response.methodName = CIMName(String(name.c_str()));
        }
        if (first && is(first, "ERROR"))
        {
            // Instances inside ERROR describe the error further; they are
            // not needed to report it and are skipped.
            std::string code = first.attribute("CODE").value();
            char* end = nullptr;
            unsigned long n = std::strtoul(code.c_str(), &end, 10);
            if (code.empty() || *end != '\0' || n == 0 || n > 0xFFFFFFFFul)
                invalid("ERROR with CODE '" + code + "'");
            response.errorCode = Uint32(n);
            response.errorDescription = attrString(first, "DESCRIPTION", false);
            return response;
        }
        if (response.intrinsic)
        {
            pugi::xml_node ret = first && is(first, "IRETURNVALUE") ? first : pugi::xml_node();
            response.returnValue = readIntrinsicResult(response.operation, ret, ctx);
            // The pull operations' EnumerationContext and EndOfSequence.
            for (pugi::xml_node e = ret ? nextElement(ret) : first; e; e = nextElement(e))
            {
                if (!is(e, "PARAMVALUE"))
                    invalid(std::string("IMETHODRESPONSE holds ") + e.name());
                response.outParameters.append(readParamValue(e, ctx));
            }
        }
        else
        {
            pugi::xml_node e = first;
            if (e && is(e, "RETURNVALUE"))
            {
                CIMType type = CIMTYPE_STRING;
                pugi::xml_attribute t = e.attribute("PARAMTYPE");
                if (!t)
                    t = e.attribute("TYPE");
                pugi::xml_node v = firstElement(e);
                CIMType embedded;
                if (isEmbeddedObject(e, embedded))
                    type = embedded;
                else if (t && !parseWireType(t.value(), type))
                    invalid(std::string("RETURNVALUE with unknown PARAMTYPE '") + t.value() + "'");
                else if (!t && v && is(v, "VALUE.REFERENCE"))
                    type = CIMTYPE_REFERENCE;
                response.returnValue = readTypedValue(v, type, false, ctx);
                e = nextElement(e);
            }
            for (; e; e = nextElement(e))
            {
                if (!is(e, "PARAMVALUE"))
                    invalid(std::string("METHODRESPONSE holds ") + e.name());
                response.outParameters.append(readParamValue(e, ctx));
            }
        }
    }
    catch (const Exception& bad)
    {
        throw DecodeError(DecodeFailure::NotValid, messageOf(bad));
    }
    return response;
}
}  // namespace

// ---- streaming ----

namespace
{
template <class Write>
std::string encoded(std::size_t bufferSize, Write&& write)
{
    StringSink sink;
    XmlWriter w(sink, bufferSize);
    write(w);
    w.flush();
    return std::move(sink.text);
}
}  // namespace

std::string encodeInstanceWithPath(const CIMConstInstance& instance, const CIMObjectPath& path)
{
    return encoded(4096, [&](XmlWriter& w) {
        w.lit("<VALUE.INSTANCEWITHPATH>");
        writeObjectPath(w, path);
        writeInstance(w, instance);
        w.lit("</VALUE.INSTANCEWITHPATH>");
    });
}

std::string encodeInstancePath(const CIMObjectPath& path)
{
    return encoded(1024, [&](XmlWriter& w) { writeObjectPath(w, path); });
}

class ResponseWriter::Impl
{
public:
    Impl(Sink& sink, const std::string& messageId, Intrinsic op, std::size_t bufferSize)
        : w(sink, bufferSize), messageId(messageId), op(op), shape(resultShape(op))
    {}

    void expect(std::initializer_list<ResultShape> shapes, const char* call)
    {
        if (state != 1)
            throw std::logic_error(std::string("ResponseWriter::") + call + " outside begin()/finish()");
        bool fits = false;
        for (ResultShape s : shapes)
            fits = fits || s == shape;
        if (!fits)
            throw std::logic_error(
                std::string("ResponseWriter::") + call + " does not fit " + intrinsicName(op));
        bool singleValued = shape == ResultShape::Class || shape == ResultShape::Instance ||
            shape == ResultShape::InstanceName || shape == ResultShape::PropertyValue;
        if (singleValued && count > 0)
            throw std::logic_error(std::string(intrinsicName(op)) + " returns one result only");
        count++;
    }

    XmlWriter w;
    std::string messageId;
    Intrinsic op;
    ResultShape shape;
    int state = 0;  // 0 new, 1 begun, 2 finished
    unsigned long count = 0;
};

ResponseWriter::ResponseWriter(
    Sink& sink, const std::string& messageId, Intrinsic operation, std::size_t bufferSize)
    : _impl(new Impl(sink, messageId, operation, bufferSize))
{}

ResponseWriter::~ResponseWriter()
{
    delete _impl;
}

void ResponseWriter::begin()
{
    if (_impl->state != 0)
        throw std::logic_error("ResponseWriter::begin called twice");
    XmlWriter& w = _impl->w;
    writeEnvelopeStart(w, _impl->messageId, "SIMPLERSP");
    w.lit("<IMETHODRESPONSE NAME=\"");
    w.raw(intrinsicName(_impl->op));
    w.lit("\">");
    if (_impl->shape != ResultShape::Nothing)
        w.lit("<IRETURNVALUE>");
    _impl->state = 1;
}

void ResponseWriter::addClass(const CIMConstClass& cimClass)
{
    _impl->expect({ResultShape::Class, ResultShape::Classes}, "addClass");
    writeClass(_impl->w, cimClass);
}

void ResponseWriter::addClassName(const CIMName& className)
{
    _impl->expect({ResultShape::ClassNames}, "addClassName");
    _impl->w.lit("<CLASSNAME NAME=\"");
    _impl->w.attrText(className.getString());
    _impl->w.lit("\"/>");
}

void ResponseWriter::addInstance(const CIMConstInstance& instance)
{
    addInstance(instance, instance.getPath());
}

void ResponseWriter::addInstance(const CIMConstInstance& instance, const CIMObjectPath& path)
{
    _impl->expect({ResultShape::Instance, ResultShape::NamedInstances}, "addInstance");
    if (_impl->shape == ResultShape::Instance)
        writeInstance(_impl->w, instance);
    else
        writeNamedInstance(_impl->w, instance, path);
}

void ResponseWriter::addInstanceName(const CIMObjectPath& path)
{
    _impl->expect({ResultShape::InstanceNames, ResultShape::InstanceName}, "addInstanceName");
    writeInstanceName(_impl->w, path);
}

void ResponseWriter::addObject(const CIMConstObject& object)
{
    _impl->expect({ResultShape::ObjectsWithPath}, "addObject");
    writeObjectWithPath(_impl->w, object);
}

void ResponseWriter::addObjectPath(const CIMObjectPath& path)
{
    _impl->expect({ResultShape::ObjectPaths}, "addObjectPath");
    _impl->w.lit("<OBJECTPATH>");
    writeObjectPath(_impl->w, path);
    _impl->w.lit("</OBJECTPATH>");
}

void ResponseWriter::addValue(const CIMValue& value)
{
    _impl->expect({ResultShape::PropertyValue}, "addValue");
    writeValue(_impl->w, value);
}

void ResponseWriter::addEncoded(const std::string& element)
{
    _impl->expect({ResultShape::InstancesWithPath, ResultShape::InstancePaths}, "addEncoded");
    _impl->w.raw(element);
}

void ResponseWriter::finish(const Array<CIMParamValue>& outParameters)
{
    if (_impl->state != 1)
        throw std::logic_error("ResponseWriter::finish without begin");
    XmlWriter& w = _impl->w;
    if (_impl->shape != ResultShape::Nothing)
        w.lit("</IRETURNVALUE>");
    for (Uint32 i = 0; i < outParameters.size(); i++)
        writeParamValue(w, "PARAMVALUE", outParameters[i]);
    w.lit("</IMETHODRESPONSE>");
    writeEnvelopeEnd(w, "SIMPLERSP");
    w.flush();
    _impl->state = 2;
}

}  // namespace cimxml
