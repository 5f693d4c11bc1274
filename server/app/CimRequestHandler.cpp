#include "CimRequestHandler.h"
#include "QueuedStream.h"

#include <InProcessHost.h>
#include <ProviderErrors.h>
#include <ServerLog.h>

#include <cimxml/Codec.h>
#include <cimxml/Http.h>
#include <cimxml/OperationCalls.h>

#include <openssl/evp.h>

#include <chrono>
#include <exception>
#include <functional>

namespace zda::cimserver
{

using namespace Pegasus;
using cimxml::Intrinsic;
using cimxml::OperationRequest;
using cimxml::OperationResponse;
namespace bhttp = boost::beast::http;
namespace xhttp = cimxml::http;

namespace
{

// Runs one decoded request whose result is a single value (or an
// extrinsic method) on the dispatcher; CIM errors become the response's
// error.
OperationResponse dispatch(server::Dispatcher& d, const OperationContext& ctx, const OperationRequest& r)
{
    try
    {
        try
        {
            return cimxml::callOperation(d, ctx, r);
        }
        catch (const CIMException&)
        {
            throw;
        }
        catch (...)
        {
            // Anything else (a bad parameter value the SDK refuses, a
            // library fault) still answers as a CIM error.
            server::rethrowAsCIMException();
        }
    }
    catch (const CIMException& e)
    {
        return cimxml::errorResponse(r, Uint32(e.getCode()), server::errorDescription(e));
    }
}

std::string utf8(const String& s)
{
    return std::string(static_cast<const char*>(s.getCString()));
}

bool pathsOnly(Intrinsic op)
{
    return op == Intrinsic::OpenEnumerateInstancePaths || op == Intrinsic::OpenReferenceInstancePaths ||
        op == Intrinsic::OpenAssociatorInstancePaths || op == Intrinsic::PullInstancePaths;
}

// The enumeration an open starts, run by its context's producer thread:
// each result is encoded as the provider delivers it.
server::EnumerationContexts::Producer pullProducer(
    server::Dispatcher& d, const OperationContext& ctx, const OperationRequest& r)
{
    return [&d, ctx, r](const server::EnumerationContexts::Emit& emit) {
        const CIMNamespaceName& ns = r.nameSpace;
        auto instance = [&](const CIMInstance& i, const CIMObjectPath& p) {
            emit(cimxml::encodeInstanceWithPath(i, p));
        };
        auto object = [&](const CIMObject& o) { instance(CIMInstance(o), o.getPath()); };
        auto path = [&](const CIMObjectPath& p) { emit(cimxml::encodeInstancePath(p)); };
        switch (r.operation)
        {
        case Intrinsic::OpenEnumerateInstances:
            d.enumerateInstances(ctx, ns, r.className("ClassName"), r.flag("DeepInheritance"), false, false,
                r.flag("IncludeClassOrigin"), r.propertyList(), instance);
            break;
        case Intrinsic::OpenEnumerateInstancePaths:
            d.enumerateInstanceNames(ctx, ns, r.className("ClassName"), path);
            break;
        case Intrinsic::OpenReferenceInstances:
            d.references(ctx, ns, r.objectPath("InstanceName"), r.className("ResultClass"), r.text("Role"),
                false, r.flag("IncludeClassOrigin"), r.propertyList(), object);
            break;
        case Intrinsic::OpenReferenceInstancePaths:
            d.referenceNames(
                ctx, ns, r.objectPath("InstanceName"), r.className("ResultClass"), r.text("Role"), path);
            break;
        case Intrinsic::OpenAssociatorInstances:
            d.associators(ctx, ns, r.objectPath("InstanceName"), r.className("AssocClass"),
                r.className("ResultClass"), r.text("Role"), r.text("ResultRole"), false,
                r.flag("IncludeClassOrigin"), r.propertyList(), object);
            break;
        case Intrinsic::OpenAssociatorInstancePaths:
            d.associatorNames(ctx, ns, r.objectPath("InstanceName"), r.className("AssocClass"),
                r.className("ResultClass"), r.text("Role"), r.text("ResultRole"), path);
            break;
        default: break;
        }
    };
}

// The pull operations, answered into `writer`: an open starts its
// enumeration on a context of its own and answers the first piece, a pull
// the next; each result goes into the answer as the producer hands it over.
void writePullResult(server::Dispatcher& d, server::EnumerationContexts& pulls, const std::string& user,
    const OperationContext& ctx, const OperationRequest& r, cimxml::ResponseWriter& writer)
{
    Array<CIMParamValue> out;
    if (r.operation == Intrinsic::CloseEnumeration)
    {
        pulls.close(user, utf8(r.text("EnumerationContext")));
        return writer.finish(out);
    }
    Uint32 maxObjectCount = 0;
    r.value("MaxObjectCount").get(maxObjectCount);
    pulls.checkObjectCount(maxObjectCount);
    const bool paths = pathsOnly(r.operation);
    auto take = [&](const std::string& element) { writer.addEncoded(element); };
    bool endOfSequence;
    std::string name;
    if (r.operation == Intrinsic::PullInstancesWithPath || r.operation == Intrinsic::PullInstancePaths)
    {
        name = utf8(r.text("EnumerationContext"));
        endOfSequence = pulls.pull(user, name, paths, maxObjectCount, take);
    }
    else
    {
        if (r.text("FilterQueryLanguage").size() != 0 || r.text("FilterQuery").size() != 0)
            throw CIMException(CIM_ERR_FILTERED_ENUMERATION_NOT_SUPPORTED,
                "Filtered enumerations are not supported: leave out FilterQueryLanguage and "
                "FilterQuery.");
        if (r.flag("ContinueOnError"))
            throw CIMException(CIM_ERR_CONTINUATION_ON_ERROR_NOT_SUPPORTED,
                "Enumerations end at their first error: ContinueOnError must be false.");
        const CIMValue timeout = r.value("OperationTimeout");
        std::optional<Uint32> seconds;
        if (!timeout.isNull())
        {
            Uint32 given = 0;
            timeout.get(given);
            seconds = given;
        }
        const std::chrono::milliseconds lifetime = pulls.timeoutFor(seconds);
        if (r.find("InstanceName") && r.objectPath("InstanceName").getKeyBindings().size() == 0)
            throw CIMException(CIM_ERR_INVALID_PARAMETER, "InstanceName must name an instance (with keys).");
        server::EnumerationContexts::Opened opened = pulls.open(
            user, paths, lifetime, pullProducer(d, ctx, r), maxObjectCount, take);
        endOfSequence = opened.endOfSequence;
        name = opened.name;
    }
    out.append(CIMParamValue("EnumerationContext",
        endOfSequence ? CIMValue(CIMTYPE_STRING, false) : CIMValue(String(name.c_str()))));
    out.append(CIMParamValue("EndOfSequence", CIMValue(Boolean(endOfSequence))));
    writer.finish(out);
}

// Answers the operations whose results can be long lists straight into
// `sink`, each result encoded as the provider delivers it; false for the
// others (and for extrinsic methods), which go through dispatch().
bool writeListResult(server::Dispatcher& d, server::EnumerationContexts& pulls, const std::string& user,
    const OperationContext& ctx, const OperationRequest& r, cimxml::Sink& sink)
{
    if (!r.intrinsic)
        return false;
    const bool pull = cimxml::isPullOperation(r.operation);
    switch (r.operation)
    {
    case Intrinsic::EnumerateInstances:
    case Intrinsic::EnumerateInstanceNames:
    case Intrinsic::Associators:
    case Intrinsic::References:
    case Intrinsic::AssociatorNames:
    case Intrinsic::ReferenceNames: break;
    default:
        if (!pull)
            return false;
    }
    const CIMNamespaceName& ns = r.nameSpace;
    cimxml::ResponseWriter writer(sink, r.messageId, r.operation);
    writer.begin();
    if (pull)
    {
        writePullResult(d, pulls, user, ctx, r, writer);
        return true;
    }
    auto addInstance = [&](const CIMInstance& i, const CIMObjectPath& path) { writer.addInstance(i, path); };
    auto addObject = [&](const CIMObject& o) { writer.addObject(o); };
    auto addObjectPath = [&](const CIMObjectPath& p) { writer.addObjectPath(p); };
    switch (r.operation)
    {
    case Intrinsic::EnumerateInstances:
        d.enumerateInstances(ctx, ns, r.className("ClassName"), r.flag("DeepInheritance"),
            r.flag("LocalOnly"), r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList(),
            addInstance);
        break;
    case Intrinsic::EnumerateInstanceNames:
        d.enumerateInstanceNames(
            ctx, ns, r.className("ClassName"), [&](const CIMObjectPath& p) { writer.addInstanceName(p); });
        break;
    case Intrinsic::Associators:
        d.associators(ctx, ns, r.objectPath("ObjectName"), r.className("AssocClass"),
            r.className("ResultClass"), r.text("Role"), r.text("ResultRole"), r.flag("IncludeQualifiers"),
            r.flag("IncludeClassOrigin"), r.propertyList(), addObject);
        break;
    case Intrinsic::References:
        d.references(ctx, ns, r.objectPath("ObjectName"), r.className("ResultClass"), r.text("Role"),
            r.flag("IncludeQualifiers"), r.flag("IncludeClassOrigin"), r.propertyList(), addObject);
        break;
    case Intrinsic::AssociatorNames:
        d.associatorNames(ctx, ns, r.objectPath("ObjectName"), r.className("AssocClass"),
            r.className("ResultClass"), r.text("Role"), r.text("ResultRole"), addObjectPath);
        break;
    case Intrinsic::ReferenceNames:
        d.referenceNames(
            ctx, ns, r.objectPath("ObjectName"), r.className("ResultClass"), r.text("Role"), addObjectPath);
        break;
    default: break;
    }
    writer.finish();
    return true;
}

// Where a list result's encoding goes. The first piece is held back: an
// answer of one piece then goes out whole, with a length, and a CIM error
// raised before a second piece exists still gets an ordinary error
// response. From the second piece on, pieces go to the connection as they
// come, so at most one piece is held here.
class StreamingSink : public cimxml::Sink
{
public:
    StreamingSink(ResponseStream& stream, std::function<HttpResponseHead()> head)
        : _stream(stream), _head(std::move(head))
    {}

    void write(const char* data, std::size_t size) override
    {
        if (!_streaming)
        {
            if (!_holding)
            {
                _held.assign(data, size);
                _holding = true;
                return;
            }
            HttpResponseHead head = _head();
            _streaming = true;
            _stream.begin(head);
            _stream.send(_held.data(), _held.size());
            std::string().swap(_held);
        }
        _stream.send(data, size);
    }

    bool streaming() const { return _streaming; }
    // The whole answer, when it never started streaming.
    std::string takeHeld() { return std::move(_held); }

private:
    ResponseStream& _stream;
    std::function<HttpResponseHead()> _head;
    std::string _held;
    bool _holding = false;
    bool _streaming = false;
};

bool decodeBase64(const std::string& in, std::string& out)
{
    if (in.empty() || in.size() % 4 != 0 || in.size() > 4096)
        return false;
    out.assign(in.size() / 4 * 3, '\0');
    int n = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(&out[0]),
        reinterpret_cast<const unsigned char*>(in.data()), int(in.size()));
    if (n < 0)
        return false;
    std::size_t padding = in[in.size() - 1] == '=' ? (in[in.size() - 2] == '=' ? 2 : 1) : 0;
    out.resize(std::size_t(n) - padding);
    return true;
}

bool startsWithNoCase(const std::string& text, const char* prefix)
{
    std::size_t n = std::char_traits<char>::length(prefix);
    if (text.size() < n)
        return false;
    for (std::size_t i = 0; i < n; i++)
        if (std::tolower(static_cast<unsigned char>(text[i])) !=
            std::tolower(static_cast<unsigned char>(prefix[i])))
            return false;
    return true;
}

}  // namespace

CimRequestHandler::CimRequestHandler(
    server::Dispatcher& dispatcher, const UserStore& users, HandlerOptions options)
    : _dispatcher(dispatcher), _users(users), _options(std::move(options)),
      _pulls(std::make_unique<server::EnumerationContexts>(_options.pull))
{}

HttpResponse CimRequestHandler::refusal(
    unsigned status, const std::string& cimError, unsigned version, bool keepAlive)
{
    HttpResponse res{bhttp::status(status), version};
    res.set(bhttp::field::server, "zda-cimserver");
    if (!cimError.empty())
        res.set(xhttp::CIM_ERROR, cimError);
    res.keep_alive(keepAlive);
    res.prepare_payload();
    return res;
}

HttpResponse CimRequestHandler::authenticationRequired(unsigned version, bool keepAlive)
{
    HttpResponse res = refusal(401, "", version, keepAlive);
    res.set(bhttp::field::www_authenticate, "Basic realm=\"zda-cimserver\"");
    return res;
}

CimRequestHandler::Credentials CimRequestHandler::checkCredentials(
    const HttpRequestHead& head, Peer& peer, bool mayHash, std::string& user) const
{
    user.clear();
    if (peer.trustedLocal)
    {
        user = _options.localUser;
        return Credentials::Accepted;
    }
    std::string header(head[bhttp::field::authorization]);
    if (!peer.verifiedAuthorization.empty() && header == peer.verifiedAuthorization)
    {
        user = peer.verifiedUser;
        return Credentials::Accepted;
    }
    if (!startsWithNoCase(header, "Basic "))
        return Credentials::Refused;
    std::string credentials;
    std::size_t start = header.find_first_not_of(' ', 6);
    if (start == std::string::npos || !decodeBase64(header.substr(start), credentials))
        return Credentials::Refused;
    std::size_t colon = credentials.find(':');
    if (colon == std::string::npos)
        return Credentials::Refused;
    std::string name = credentials.substr(0, colon);
    const std::string password = credentials.substr(colon + 1);
    const bool accepted = mayHash ? _users.verify(name, password) : _users.remembered(name, password);
    if (!accepted)
    {
        user = std::move(name);
        return mayHash ? Credentials::Refused : Credentials::NeedsHash;
    }
    peer.verifiedAuthorization = header;
    peer.verifiedUser = name;
    user = std::move(name);
    return Credentials::Accepted;
}

std::optional<HttpResponse> CimRequestHandler::handle(
    const HttpRequest& req, Peer& peer, ResponseStream& stream) const
{
    const unsigned version = req.version();
    const bool keepAlive = req.keep_alive();
    // M-POST names the CIM headers with the prefix its Man header declares.
    std::string prefix;
    if (req.method_string() == "M-POST")
    {
        prefix = xhttp::extensionHeaderPrefix(std::string(req["Man"]));
        if (prefix.empty())
            return refusal(501, "", version, false);
    }
    else if (req.method() != bhttp::verb::post)
    {
        HttpResponse res = refusal(405, "", version, keepAlive);
        res.set(bhttp::field::allow, "POST, M-POST");
        return res;
    }
    auto cimHeader = [&](const char* name) { return std::string(req[prefix + name]); };

    // The listener has checked the credentials before reading the body;
    // this finds them on the connection, and keeps the handler safe alone.
    std::string user;
    if (checkCredentials(req, peer, true, user) != Credentials::Accepted)
        return authenticationRequired(version, keepAlive);

    if (cimHeader(xhttp::CIM_OPERATION) != "MethodCall")
    {
        auto r = xhttp::unsupportedOperation();
        return refusal(r.status, r.cimError, version, keepAlive);
    }
    if (req.find(prefix + xhttp::CIM_BATCH) != req.end())
    {
        auto r = xhttp::refusalFor(cimxml::DecodeFailure::MultipleRequests);
        return refusal(r.status, r.cimError, version, keepAlive);
    }
    std::string protocolVersion = cimHeader(xhttp::CIM_PROTOCOL_VERSION);
    if (!protocolVersion.empty() && protocolVersion.compare(0, 2, "1.") != 0 && protocolVersion != "1")
        return refusal(501, "unsupported-protocol-version", version, keepAlive);
    if (!xhttp::isXmlContentType(std::string(req[bhttp::field::content_type])))
        return refusal(406, "", version, keepAlive);

    // The CIM-XML answer, whatever it holds, goes back with status 200.
    auto setAnswerFields = [&](auto& res) {
        res.set(bhttp::field::server, "zda-cimserver");
        res.set(bhttp::field::content_type, xhttp::CONTENT_TYPE_XML);
        if (!prefix.empty())
            res.set(bhttp::field::ext, "");
        res.set(prefix + xhttp::CIM_OPERATION, "MethodResponse");
        res.keep_alive(keepAlive);
    };
    auto answer = [&](std::string xml) {
        HttpResponse res{bhttp::status::ok, version};
        setAnswerFields(res);
        res.body() = std::move(xml);
        res.prepare_payload();
        return res;
    };
    auto streamedHead = [&] {
        HttpResponseHead head{bhttp::status::ok, version};
        setAnswerFields(head);
        head.set(bhttp::field::trailer,
            std::string(xhttp::CIM_STATUS_CODE) + ", " + xhttp::CIM_STATUS_CODE_DESCRIPTION);
        return head;
    };
    cimxml::StringSink body;
    OperationResponse response;
    try
    {
        cimxml::DecodeLimits limits;
        limits.maxDepth = _options.maxXmlDepth;
        OperationRequest request = cimxml::decodeRequest(req.body().data(), req.body().size(), limits);
        if (!xhttp::headersMatch(request, cimHeader(xhttp::CIM_METHOD), cimHeader(xhttp::CIM_OBJECT)))
        {
            auto r = xhttp::headerMismatch();
            return refusal(r.status, r.cimError, version, keepAlive);
        }
        if (server::InProcessHost::isInternalNamespace(request.nameSpace))
            throw cimxml::RequestRefused(CIM_ERR_INVALID_NAMESPACE,
                "The namespace " + std::string(request.nameSpace.getString().getCString()) +
                    " does not exist.",
                request.messageId, std::string(request.name().getCString()), request.intrinsic);
        server::logFormat(4, "zda-cimserver: %s %s in %s from %s", user.c_str(),
            static_cast<const char*>(request.name().getCString()),
            static_cast<const char*>(request.nameSpace.getString().getCString()),
            peer.address.empty() ? "the local socket" : peer.address.c_str());
        OperationContext context = server::InProcessHost::contextFor(
            String(user.c_str()), String(peer.address.c_str()));
        // A streamed answer is written by a thread of its own while this
        // one goes on encoding.
        QueuedStream queued(stream);
        StreamingSink listSink(queued, streamedHead);
        try
        {
            try
            {
                if (writeListResult(_dispatcher, *_pulls, user, context, request, listSink))
                {
                    if (!listSink.streaming())
                        return answer(listSink.takeHeld());
                    queued.end(bhttp::fields());
                    return std::nullopt;
                }
            }
            catch (const CIMException&)
            {
                throw;
            }
            catch (const ConnectionLost&)
            {
                throw;
            }
            catch (const std::logic_error&)
            {
                throw;
            }
            catch (...)
            {
                server::rethrowAsCIMException();
            }
        }
        catch (const CIMException& e)
        {
            if (listSink.streaming())
            {
                // Part of the answer is out: cut it short and say why in
                // the trailer.
                const std::string description(
                    static_cast<const char*>(server::errorDescription(e).getCString()));
                server::logFormat(3, "zda-cimserver: %s failed after its answer started streaming: %s",
                    static_cast<const char*>(request.name().getCString()), description.c_str());
                bhttp::fields trailer;
                trailer.set(xhttp::CIM_STATUS_CODE, std::to_string(Uint32(e.getCode())));
                trailer.set(xhttp::CIM_STATUS_CODE_DESCRIPTION, xhttp::escapeHeaderValue(description));
                queued.end(trailer);
                return std::nullopt;
            }
            response = cimxml::errorResponse(request, Uint32(e.getCode()), server::errorDescription(e));
            cimxml::encodeResponse(response, body);
            return answer(std::move(body.text));
        }
        response = dispatch(_dispatcher, context, request);
    }
    catch (const cimxml::DecodeError& e)
    {
        server::logFormat(3, "zda-cimserver: refused request from %s: %s",
            peer.address.empty() ? "the local socket" : peer.address.c_str(), e.what());
        auto r = xhttp::refusalFor(e.failure);
        return refusal(r.status, r.cimError, version, keepAlive);
    }
    catch (const cimxml::RequestRefused& e)
    {
        response = e.response();
    }

    cimxml::encodeResponse(response, body);
    return answer(std::move(body.text));
}

}  // namespace zda::cimserver
