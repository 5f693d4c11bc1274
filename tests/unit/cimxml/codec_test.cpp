// The codec: what it writes reads back unchanged, what other implementations
// send is understood, and what is broken or hostile is refused clearly.
#include <cimxml/Codec.h>
#include <cimxml/Http.h>

#include <SdkText.h>

#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/Exception.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace Pegasus;
using namespace cimxml;

namespace
{

using zda_test::text;

// A volume's path with string (one with quotes and brackets), numeric and
// boolean keys.
CIMObjectPath volumePath(const std::string& id = "vol-1")
{
    return CIMObjectPath(String(
        ("ZDA_StorageVolume.DeviceID=\"" + id + "\",SystemName=\"array \\\"A\\\" <1>\",Slot=7,Primary=TRUE")
            .c_str()));
}

CIMInstance embeddedInstance()
{
    CIMInstance job("ZDA_Job");
    job.addProperty(CIMProperty("Name", CIMValue(String("copy & clone"))));
    job.addProperty(CIMProperty("Percent", CIMValue(Uint16(42))));
    return job;
}

// A volume instance with its path set.
CIMInstance namedVolume()
{
    CIMInstance v("ZDA_StorageVolume");
    v.addProperty(CIMProperty("DeviceID", CIMValue(String("vol-1"))));
    v.addProperty(CIMProperty("Job", CIMValue(embeddedInstance())));
    v.setPath(volumePath());
    return v;
}

CIMClass sampleClass()
{
    CIMClass c("ZDA_ReplicationService", "CIM_Service");
    c.addQualifier(CIMQualifier(
        "Description", CIMValue(String("Makes replicas")), CIMFlavor::DEFAULTS + CIMFlavor::TRANSLATABLE));
    c.addQualifier(
        CIMQualifier("Version", CIMValue(String("1.0")), CIMFlavor::DISABLEOVERRIDE + CIMFlavor::RESTRICTED));
    CIMProperty name("Name", CIMValue(CIMTYPE_STRING, false), 0, CIMName(), "CIM_ManagedElement", true);
    name.addQualifier(
        CIMQualifier("Key", CIMValue(true), CIMFlavor::DISABLEOVERRIDE + CIMFlavor::TOSUBCLASS));
    c.addProperty(name);
    c.addProperty(CIMProperty("Sizes", CIMValue(CIMTYPE_UINT64, true), 4));
    c.addProperty(CIMProperty("Owner", CIMValue(CIMTYPE_REFERENCE, false), 0, "CIM_System"));
    CIMMethod m("CreateElementReplica", CIMTYPE_UINT32);
    m.addQualifier(CIMQualifier("ValueMap", CIMValue(Array<String>(1, String("0"))), CIMFlavor::DEFAULTS));
    m.addParameter(CIMParameter("ElementName", CIMTYPE_STRING));
    m.addParameter(CIMParameter("SourceElement", CIMTYPE_REFERENCE, false, 0, "CIM_LogicalElement"));
    m.addParameter(CIMParameter("Members", CIMTYPE_REFERENCE, true, 0, "CIM_LogicalElement"));
    m.addParameter(CIMParameter("Flags", CIMTYPE_UINT16, true, 3));
    // An embedded instance parameter is declared a string with a qualifier.
    CIMParameter goal("Goal", CIMTYPE_INSTANCE);
    goal.addQualifier(
        CIMQualifier("EmbeddedInstance", CIMValue(String("CIM_SettingData")), CIMFlavor::DEFAULTS));
    m.addParameter(goal);
    c.addMethod(m);
    return c;
}

// One value of every type, scalar and array, plus nulls.
std::vector<std::pair<std::string, CIMValue>> everyValue()
{
    CIMDateTime stamp("20261121104501.123456+060");
    CIMDateTime interval("00000001020304.000005:000");
    CIMObjectPath full = volumePath();
    full.setHost("array.example.com:5989");
    full.setNameSpace("root/zda");
    CIMObjectPath local = volumePath("vol-2");
    local.setNameSpace("root/zda");
    Array<CIMObjectPath> paths;
    paths.append(full);
    paths.append(volumePath("vol-3"));
    Array<CIMInstance> instances;
    instances.append(embeddedInstance());
    instances.append(CIMInstance("ZDA_Empty"));
    Array<CIMObject> objects;
    objects.append(CIMObject(embeddedInstance()));
    objects.append(CIMObject(CIMClass("ZDA_Thing")));
    Array<Char16> chars;
    chars.append(Char16('a'));
    chars.append(Char16(0x20AC));
    Array<String> strings;
    strings.append("");
    strings.append("  spaced  ");
    strings.append("line1\r\nline2\ttab <&> \"q\" 'a' \xC3\xA9 \xF0\x9F\x98\x80");
    // Shortest round-trip precision, subnormals, extremes and infinities.
    Array<Real64> reals;
    for (Real64 x : {0.1, -1.5e300, 1e-310, -0.0, 1.7976931348623157e308,
             std::numeric_limits<Real64>::infinity(), -std::numeric_limits<Real64>::infinity()})
        reals.append(x);

    return {
        {"boolean", CIMValue(true)},
        {"uint8", CIMValue(Uint8(255))},
        {"sint8", CIMValue(Sint8(-128))},
        {"uint16", CIMValue(Uint16(65535))},
        {"sint16", CIMValue(Sint16(-32768))},
        {"uint32", CIMValue(Uint32(4294967295u))},
        {"sint32", CIMValue(Sint32(-2147483647 - 1))},
        {"uint64", CIMValue(Uint64(18446744073709551615ull))},
        {"sint64", CIMValue(Sint64(std::numeric_limits<Sint64>::min()))},
        {"real32", CIMValue(Real32(3.1415927f))},
        {"real64", CIMValue(Real64(2.718281828459045))},
        {"char16", CIMValue(Char16(0x00E9))},
        {"string", CIMValue(String("a <b> & \"c\"\n"))},
        {"datetime", CIMValue(stamp)},
        {"interval", CIMValue(interval)},
        {"reference", CIMValue(full)},
        {"local reference", CIMValue(local)},
        {"bare reference", CIMValue(volumePath())},
        {"instance", CIMValue(embeddedInstance())},
        {"object", CIMValue(CIMObject(embeddedInstance()))},
        {"class object", CIMValue(CIMObject(sampleClass()))},
        {"boolean[]", CIMValue(Array<Boolean>(2, false))},
        {"uint8[]", CIMValue(Array<Uint8>(3, Uint8(7)))},
        {"sint64[]", CIMValue(Array<Sint64>(1, Sint64(-9)))},
        {"real64[]", CIMValue(reals)},
        {"char16[]", CIMValue(chars)},
        {"string[]", CIMValue(strings)},
        {"empty string[]", CIMValue(Array<String>())},
        {"datetime[]", CIMValue(Array<CIMDateTime>(2, stamp))},
        {"reference[]", CIMValue(paths)},
        {"instance[]", CIMValue(instances)},
        {"object[]", CIMValue(objects)},
        {"null uint32", CIMValue(CIMTYPE_UINT32, false)},
        {"null string[]", CIMValue(CIMTYPE_STRING, true)},
        {"null instance", CIMValue(CIMTYPE_INSTANCE, false)},
        {"null reference", CIMValue(CIMTYPE_REFERENCE, false)},
    };
}

std::string encode(const OperationRequest& r)
{
    StringSink sink;
    encodeRequest(r, sink);
    return sink.text;
}

std::string encode(const OperationResponse& r)
{
    StringSink sink;
    encodeResponse(r, sink);
    return sink.text;
}

OperationRequest requestRoundTrip(const OperationRequest& r)
{
    std::string xml = encode(r);
    return decodeRequest(xml.data(), xml.size());
}

OperationResponse responseRoundTrip(const OperationResponse& r)
{
    std::string xml = encode(r);
    return decodeResponse(xml.data(), xml.size());
}

OperationRequest decodeRequestText(const std::string& xml)
{
    return decodeRequest(xml.data(), xml.size());
}

OperationResponse decodeResponseText(const std::string& xml)
{
    return decodeResponse(xml.data(), xml.size());
}

const char kHead[] = "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
                     "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                     "<MESSAGE ID=\"77\" PROTOCOLVERSION=\"1.0\">";
const char kTail[] = "</MESSAGE></CIM>";

std::string request(const std::string& call)
{
    return std::string(kHead) + "<SIMPLEREQ>" + call + "</SIMPLEREQ>" + kTail;
}

std::string response(const std::string& rsp)
{
    return std::string(kHead) + "<SIMPLERSP>" + rsp + "</SIMPLERSP>" + kTail;
}

const char kZda[] = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"zda\"/>"
                    "</LOCALNAMESPACEPATH>";

// A request with one intrinsic call in root/zda.
std::string imethod(const std::string& name, const std::string& parameters = "")
{
    return request("<IMETHODCALL NAME=\"" + name + "\">" + kZda + parameters + "</IMETHODCALL>");
}

DecodeFailure failureOf(
    const std::string& xml, bool asRequest = true, const DecodeLimits& limits = DecodeLimits())
{
    try
    {
        if (asRequest)
            decodeRequest(xml.data(), xml.size(), limits);
        else
            decodeResponse(xml.data(), xml.size(), limits);
    }
    catch (const DecodeError& e)
    {
        EXPECT_STRNE("", e.what());
        return e.failure;
    }
    ADD_FAILURE() << "accepted: " << xml.substr(0, 300);
    return DecodeFailure::NotValid;
}

}  // namespace

// ---- values ----

TEST(CimXmlValues, EveryTypeSurvivesAsPropertyParameterAndReturnValue)
{
    for (const auto& [label, value] : everyValue())
    {
        SCOPED_TRACE(label);
        // Properties cannot hold arrays of references; parameters can.
        if (!(value.getType() == CIMTYPE_REFERENCE && value.isArray()))
        {
            CIMInstance instance("ZDA_Holder");
            instance.addProperty(CIMProperty("P", value));
            OperationResponse get;
            get.operation = Intrinsic::GetInstance;
            get.returnValue = CIMValue(instance);
            CIMInstance back;
            responseRoundTrip(get).returnValue.get(back);
            EXPECT_TRUE(back.identical(instance)) << encode(get);
        }

        OperationRequest call;
        call.intrinsic = false;
        call.methodName = CIMName("Take");
        call.nameSpace = CIMNamespaceName("root/zda");
        call.target = volumePath();
        call.parameters.append(CIMParamValue("In", value));
        OperationRequest decoded = requestRoundTrip(call);
        ASSERT_EQ(1u, decoded.parameters.size());
        EXPECT_TRUE(decoded.parameters[0].isTyped());
        CIMValue got = decoded.parameters[0].getValue();
        if (value.isNull())  // the wire cannot tell a null array from a null scalar
            EXPECT_TRUE(got.isNull() && got.getType() == value.getType());
        else
            EXPECT_TRUE(got == value) << encode(call);

        if (!value.isArray() && !value.isNull())
        {
            OperationResponse ret;
            ret.intrinsic = false;
            ret.methodName = CIMName("Take");
            ret.returnValue = value;
            ret.outParameters.append(CIMParamValue("Out", value));
            OperationResponse r = responseRoundTrip(ret);
            EXPECT_TRUE(r.returnValue == value) << encode(ret);
            ASSERT_EQ(1u, r.outParameters.size());
            EXPECT_TRUE(r.outParameters[0].getValue() == value);
        }
    }
}

TEST(CimXmlValues, TextSurvivesWhereverItsSpecialCharactersStand)
{
    // Plain runs of every length around each character that needs more
    // than itself, as a property value, a key value and an attribute.
    // Characters XML cannot carry (other control characters, lone
    // surrogates, U+FFFE, U+FFFF) come back as U+FFFD: the answer stays
    // well-formed, which the decoding here checks.
    const Char16 specials[] = {'<', '>', '&', '"', '\t', '\n', '\r', 0x01, 0x0B, 0x7F, 0xE9, 0x20AC, 0xD834,
        0xD800, 0xDC00, 0xFFFE, 0xFFFF};
    auto sent = [](Char16 c) {
        const Uint16 u = Uint16(c);
        const bool xml = u == '\t' || u == '\n' || u == '\r' || (u >= 0x20 && u < 0xD800) ||
            (u >= 0xE000 && u <= 0xFFFD) || u == 0xD834;
        return xml ? c : Char16(0xFFFD);
    };
    for (Char16 special : specials)
        for (Uint32 before = 0; before < 19; before += 3)
            for (Uint32 after = 0; after < 19; after += 5)
            {
                String original, expected;
                for (Uint32 i = 0; i < before; i++)
                    original.append(Char16('a' + i % 26));
                expected = original;
                original.append(special);
                expected.append(sent(special));
                if (Uint16(special) == 0xD834)
                {
                    original.append(Char16(0xDD1E));  // the pair's second half
                    expected.append(Char16(0xDD1E));
                }
                for (Uint32 i = 0; i < after; i++)
                {
                    original.append(Char16('0' + i % 10));
                    expected.append(Char16('0' + i % 10));
                }
                SCOPED_TRACE(text(original));
                CIMInstance instance("ZDA_Holder");
                instance.addProperty(CIMProperty("P", CIMValue(original)));
                Array<CIMKeyBinding> keys;
                keys.append(CIMKeyBinding("Id", original, CIMKeyBinding::STRING));
                instance.setPath(CIMObjectPath(String(), CIMNamespaceName(), "ZDA_Holder", keys));
                OperationResponse listing;
                listing.operation = Intrinsic::EnumerateInstances;
                listing.returnValue = CIMValue(Array<CIMInstance>(1, instance));
                Array<CIMInstance> back;
                responseRoundTrip(listing).returnValue.get(back);
                ASSERT_EQ(1u, back.size());
                String value;
                back[0].getProperty(0).getValue().get(value);
                // CR is the one character a reader may fold: it travels as
                // a reference, so it must come back as it went.
                EXPECT_EQ(text(value), text(expected)) << encode(listing);
                ASSERT_EQ(1u, back[0].getPath().getKeyBindings().size());
                EXPECT_EQ(text(back[0].getPath().getKeyBindings()[0].getValue()), text(expected));
            }
}

TEST(CimXmlValues, NotANumberSurvives)
{
    OperationResponse nan;
    nan.intrinsic = false;
    nan.methodName = CIMName("M");
    nan.returnValue = CIMValue(std::numeric_limits<Real32>::quiet_NaN());
    Real32 back;
    responseRoundTrip(nan).returnValue.get(back);
    EXPECT_TRUE(std::isnan(back));
}

// ---- operations ----

namespace
{
OperationRequest intrinsic(Intrinsic op)
{
    OperationRequest r;
    r.operation = op;
    r.nameSpace = CIMNamespaceName("root/zda");
    return r;
}

// The intrinsic requests whose parameters carry whole classes and instances
// (or an empty property list). Every other parameter of every operation is
// sent by CIMClient over the wire in the client's test and compared there.
std::vector<OperationRequest> objectCarryingRequests()
{
    auto with = [](Intrinsic op, std::initializer_list<std::pair<const char*, CIMValue>> ps) {
        OperationRequest r = intrinsic(op);
        for (const auto& p : ps)
            r.parameters.append(CIMParamValue(p.first, p.second));
        return r;
    };
    return {
        with(Intrinsic::CreateClass, {{"NewClass", CIMValue(CIMObject(sampleClass()))}}),
        with(Intrinsic::ModifyClass, {{"ModifiedClass", CIMValue(CIMObject(sampleClass()))}}),
        with(Intrinsic::GetInstance,
            {{"InstanceName", CIMValue(volumePath())}, {"LocalOnly", CIMValue(false)},
                {"IncludeQualifiers", CIMValue(true)}, {"IncludeClassOrigin", CIMValue(true)},
                {"PropertyList", CIMValue(Array<String>())}}),
        with(Intrinsic::CreateInstance, {{"NewInstance", CIMValue(embeddedInstance())}}),
        with(Intrinsic::ModifyInstance,
            {{"ModifiedInstance", CIMValue(namedVolume())}, {"IncludeQualifiers", CIMValue(false)},
                {"PropertyList", CIMValue(Array<String>(1, "Name"))}}),
        with(Intrinsic::SetProperty,
            {{"InstanceName", CIMValue(volumePath())}, {"PropertyName", CIMValue(String("Name"))},
                {"NewValue", CIMValue(volumePath("other"))}}),
    };
}
}  // namespace

TEST(CimXmlOperations, IntrinsicRequestsCarryWholeObjects)
{
    for (const OperationRequest& sent : objectCarryingRequests())
    {
        SCOPED_TRACE(text(sent.name()));
        OperationRequest got = requestRoundTrip(sent);
        EXPECT_TRUE(got.intrinsic);
        EXPECT_EQ(sent.operation, got.operation);
        EXPECT_EQ(text(sent.nameSpace.getString()), text(got.nameSpace.getString()));
        EXPECT_EQ(sent.messageId, got.messageId);
        ASSERT_EQ(sent.parameters.size(), got.parameters.size()) << encode(sent);
        for (Uint32 i = 0; i < sent.parameters.size(); i++)
        {
            const CIMParamValue* p = got.find(text(sent.parameters[i].getParameterName()).c_str());
            ASSERT_TRUE(p) << text(sent.parameters[i].getParameterName());
            CIMValue want = sent.parameters[i].getValue();
            if (want.getType() == CIMTYPE_INSTANCE && !want.isNull())
            {
                CIMInstance a, b;
                want.get(a);
                p->getValue().get(b);
                EXPECT_TRUE(a.identical(b));
                EXPECT_TRUE(a.getPath() == b.getPath());
            }
            else
                EXPECT_TRUE(p->getValue() == want) << text(sent.parameters[i].getParameterName());
        }
    }
}

TEST(CimXmlOperations, AbsentParametersTakeTheOperationsDefaults)
{
    OperationRequest got = decodeRequestText(imethod("EnumerateInstances",
        "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZDA_A\"/></IPARAMVALUE>"
        "<IPARAMVALUE NAME=\"LocalOnly\"/>"));
    EXPECT_EQ("ZDA_A", text(got.className("ClassName").getString()));
    EXPECT_TRUE(got.flag("DeepInheritance"));
    EXPECT_TRUE(got.flag("LocalOnly"));  // a null value is the default too
    EXPECT_FALSE(got.flag("IncludeQualifiers"));
    EXPECT_TRUE(got.propertyList().isNull());

    OperationRequest getClass = decodeRequestText(
        imethod("GetClass", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"ZDA_A\"/></IPARAMVALUE>"));
    EXPECT_TRUE(getClass.flag("IncludeQualifiers"));
    EXPECT_FALSE(getClass.flag("IncludeClassOrigin"));
    EXPECT_THROW(getClass.objectPath("ClassName"), CIMException);  // typed access checks types
}

TEST(CimXmlOperations, MethodCallsOnClassesAndInstancesKeepTargetAndTypes)
{
    for (bool onInstance : {false, true})
    {
        OperationRequest call;
        call.intrinsic = false;
        call.methodName = CIMName("CreateElementReplica");
        call.nameSpace = CIMNamespaceName("root/zda");
        if (onInstance)
            call.target = volumePath();
        else
            call.target.setClassName("ZDA_ReplicationService");
        call.parameters.append(CIMParamValue("Untyped", CIMValue(String("5")), false));
        call.parameters.append(CIMParamValue("UntypedList", CIMValue(Array<String>(2, "x")), false));
        OperationRequest got = requestRoundTrip(call);
        EXPECT_FALSE(got.intrinsic);
        EXPECT_EQ("CreateElementReplica", text(got.methodName.getString()));
        EXPECT_EQ("root/zda", text(got.nameSpace.getString()));
        EXPECT_TRUE(got.target == call.target) << text(got.target.toString());
        ASSERT_EQ(2u, got.parameters.size());
        EXPECT_FALSE(got.parameters[0].isTyped());
        EXPECT_TRUE(got.parameters[0].getValue() == CIMValue(String("5")));
        EXPECT_FALSE(got.parameters[1].isTyped());
        EXPECT_TRUE(got.parameters[1].getValue().isArray());
    }
}

TEST(CimXmlOperations, EveryResultShapeSurvives)
{
    CIMInstance named = namedVolume();
    CIMObjectPath full = volumePath();
    full.setHost("h:5988");
    full.setNameSpace("root/zda");
    CIMObjectPath classPath;
    classPath.setHost("h:5988");
    classPath.setNameSpace("root/zda");
    classPath.setClassName("ZDA_A");
    CIMObject withPath{namedVolume()};
    withPath.setPath(full);
    CIMObject classWithPath{CIMClass("ZDA_A")};
    classWithPath.setPath(classPath);

    struct Case
    {
        Intrinsic op;
        CIMValue result;
    };
    std::vector<Case> cases = {
        {Intrinsic::GetClass, CIMValue(CIMObject(sampleClass()))},
        {Intrinsic::EnumerateClasses, CIMValue(Array<CIMObject>(2, CIMObject(sampleClass())))},
        {Intrinsic::EnumerateClassNames, CIMValue(Array<String>(2, String("ZDA_A")))},
        {Intrinsic::GetInstance, CIMValue(embeddedInstance())},
        {Intrinsic::EnumerateInstances, CIMValue(Array<CIMInstance>(3, named))},
        {Intrinsic::EnumerateInstances, CIMValue(Array<CIMInstance>())},
        {Intrinsic::EnumerateInstanceNames, CIMValue(Array<CIMObjectPath>(2, volumePath()))},
        {Intrinsic::CreateInstance, CIMValue(volumePath())},
        {Intrinsic::ExecQuery, CIMValue(Array<CIMObject>(1, withPath))},
        {Intrinsic::Associators, CIMValue(Array<CIMObject>(1, withPath))},
        {Intrinsic::References, CIMValue(Array<CIMObject>(1, classWithPath))},
        {Intrinsic::AssociatorNames, CIMValue(Array<CIMObjectPath>(1, full))},
        {Intrinsic::ReferenceNames, CIMValue(Array<CIMObjectPath>(1, classPath))},
        {Intrinsic::DeleteInstance, CIMValue()},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(intrinsicName(c.op));
        OperationResponse r;
        r.messageId = "9";
        r.operation = c.op;
        r.returnValue = c.result;
        OperationResponse got = responseRoundTrip(r);
        EXPECT_EQ("9", got.messageId);
        EXPECT_EQ(c.op, got.operation);
        EXPECT_FALSE(got.isError());
        // identical() leaves the paths out: they are compared too.
        auto samePaths = [&](auto sent, auto back) {
            c.result.get(sent);
            got.returnValue.get(back);
            ASSERT_EQ(sent.size(), back.size());
            for (Uint32 i = 0; i < sent.size(); i++)
                EXPECT_TRUE(sent[i].identical(back[i]) && sent[i].getPath() == back[i].getPath()) << i;
        };
        if (c.result.getType() == CIMTYPE_OBJECT && c.result.isArray())
            samePaths(Array<CIMObject>(), Array<CIMObject>());
        else if (c.result.getType() == CIMTYPE_INSTANCE && c.result.isArray())
            samePaths(Array<CIMInstance>(), Array<CIMInstance>());
        else
            EXPECT_TRUE(got.returnValue == c.result) << encode(r);
    }
}

TEST(CimXmlOperations, GetPropertyResultIsUntypedTextAndSetPropertyValueToo)
{
    OperationResponse r;
    r.operation = Intrinsic::GetProperty;
    r.returnValue = CIMValue(Uint32(12));
    EXPECT_TRUE(responseRoundTrip(r).returnValue == CIMValue(String("12")));

    OperationRequest set = intrinsic(Intrinsic::SetProperty);
    set.parameters.append(CIMParamValue("InstanceName", CIMValue(volumePath())));
    set.parameters.append(CIMParamValue("PropertyName", CIMValue(String("Size"))));
    set.parameters.append(CIMParamValue("NewValue", CIMValue(Uint64(9)), false));
    OperationRequest got = requestRoundTrip(set);
    const CIMParamValue* v = got.find("NewValue");
    ASSERT_TRUE(v);
    EXPECT_FALSE(v->isTyped());
    EXPECT_TRUE(v->getValue() == CIMValue(String("9")));
}

TEST(CimXmlOperations, ErrorsCarryAnyCodeAndDescriptionUnchanged)
{
    for (bool isIntrinsic : {true, false})
        for (Uint32 code : {1u, 5u, 17u, 4096u, 0x7FFFFFFFu})
        {
            OperationResponse r;
            r.intrinsic = isIntrinsic;
            r.operation = Intrinsic::EnumerateInstances;
            if (!isIntrinsic)
                r.methodName = CIMName("CreateElementReplica");
            r.errorCode = code;
            r.errorDescription = "volume \"v1\" <busy> & locked";
            OperationResponse got = responseRoundTrip(r);
            EXPECT_EQ(code, got.errorCode);
            EXPECT_EQ(text(r.errorDescription), text(got.errorDescription));
            EXPECT_EQ(text(r.name()), text(got.name()));
        }
}

TEST(CimXmlOperations, StreamingWriterBoundsItsBufferAndChecksShapes)
{
    struct ChunkSink : Sink
    {
        void write(const char* data, std::size_t size) override
        {
            largest = std::max(largest, size);
            text.append(data, size);
        }
        std::size_t largest = 0;
        std::string text;
    } sink;
    CIMInstance named = namedVolume();
    ResponseWriter writer(sink, "5", Intrinsic::EnumerateInstances, 4096);
    EXPECT_THROW(writer.addInstance(named), std::logic_error);  // before begin()
    writer.begin();
    for (int i = 0; i < 2000; i++)
        writer.addInstance(named);
    EXPECT_THROW(writer.addClassName("ZDA_A"), std::logic_error);
    writer.finish();
    EXPECT_LT(sink.largest, 4096u + 2048u);
    Array<CIMInstance> back;
    decodeResponseText(sink.text).returnValue.get(back);
    EXPECT_EQ(2000u, back.size());

    StringSink single;
    ResponseWriter one(single, "6", Intrinsic::GetInstance);
    one.begin();
    one.addInstance(named);
    EXPECT_THROW(one.addInstance(named), std::logic_error);
}

// ---- what others send ----

TEST(CimXmlTolerance, FieldVariationsAreUnderstood)
{
    auto keyOf = [](const CIMObjectPath& p, Uint32 i) { return p.getKeyBindings()[i]; };

    // KEYVALUE without VALUETYPE/TYPE, with an empty TYPE, and typed only by TYPE.
    const std::string keys = "<KEYBINDING NAME=\"A\"><KEYVALUE>one</KEYVALUE></KEYBINDING>"
                             "<KEYBINDING NAME=\"B\"><KEYVALUE TYPE=\"\">two</KEYVALUE></KEYBINDING>"
                             "<KEYBINDING NAME=\"C\"><KEYVALUE TYPE=\"uint16\"> 3 </KEYVALUE></KEYBINDING>"
                             "<KEYBINDING NAME=\"D\"><VALUE.REFERENCE><LOCALINSTANCEPATH>" +
        std::string(kZda) +
        "<INSTANCENAME CLASSNAME=\"ZDA_S\"><KEYBINDING NAME=\"N\"><KEYVALUE>s</KEYVALUE>"
        "</KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH></VALUE.REFERENCE></KEYBINDING>"
        "<KEYBINDING NAME=\"E\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"ZDA_S\">"
        "<KEYBINDING NAME=\"N\"><KEYVALUE VALUETYPE=\"string\">t</KEYVALUE></KEYBINDING>"
        "</INSTANCENAME></VALUE.REFERENCE></KEYBINDING>";
    OperationRequest got = decodeRequestText(imethod("GetInstance",
        "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"ZDA_V\">" + keys +
            "</INSTANCENAME></IPARAMVALUE>"));
    CIMObjectPath p = got.objectPath("InstanceName");
    ASSERT_EQ(5u, p.getKeyBindings().size());
    EXPECT_EQ("one", text(keyOf(p, 0).getValue()));
    EXPECT_EQ(CIMKeyBinding::STRING, keyOf(p, 1).getType());
    EXPECT_EQ(CIMKeyBinding::NUMERIC, keyOf(p, 2).getType());
    EXPECT_EQ("3", text(keyOf(p, 2).getValue()));
    EXPECT_EQ(CIMKeyBinding::REFERENCE, keyOf(p, 3).getType());
    EXPECT_EQ("root/zda:ZDA_S.N=\"s\"", text(keyOf(p, 3).getValue()));
    EXPECT_EQ("ZDA_S.N=\"t\"", text(keyOf(p, 4).getValue()));

    // Both spellings of the embedded-object marker; PARAMTYPE with an
    // embedded instance; an untyped embedded instance parameter.
    std::string escaped = "&lt;INSTANCE CLASSNAME=\"ZDA_Job\"&gt;&lt;PROPERTY NAME=\"N\" "
                          "TYPE=\"string\"&gt;&lt;VALUE&gt;j&lt;/VALUE&gt;&lt;/PROPERTY&gt;"
                          "&lt;/INSTANCE&gt;";
    OperationRequest call = decodeRequestText(
        request("<METHODCALL NAME=\"M\"><LOCALCLASSPATH>" + std::string(kZda) +
            "<CLASSNAME NAME=\"ZDA_S\"/></LOCALCLASSPATH>"
            "<PARAMVALUE NAME=\"A\" PARAMTYPE=\"string\" EmbeddedObject=\"instance\"><VALUE>" +
            escaped +
            "</VALUE></PARAMVALUE>"
            "<PARAMVALUE NAME=\"B\" EMBEDDEDOBJECT=\"object\"><VALUE>" +
            escaped +
            "</VALUE></PARAMVALUE>"
            "<PARAMVALUE NAME=\"C\"><INSTANCE CLASSNAME=\"ZDA_Job\"/></PARAMVALUE>"
            "<PARAMVALUE NAME=\"D\"/></METHODCALL>"));
    ASSERT_EQ(4u, call.parameters.size());
    EXPECT_EQ(CIMTYPE_INSTANCE, call.parameters[0].getValue().getType());
    EXPECT_EQ(CIMTYPE_OBJECT, call.parameters[1].getValue().getType());
    EXPECT_EQ(CIMTYPE_INSTANCE, call.parameters[2].getValue().getType());
    EXPECT_TRUE(call.parameters[3].getValue().isNull());
    EXPECT_FALSE(call.parameters[3].isTyped());

    // A method response without a return value; an empty enumeration
    // without IRETURNVALUE; an ERROR carrying instances.
    OperationResponse noReturn = decodeResponseText(
        response("<METHODRESPONSE NAME=\"M\"><PARAMVALUE NAME=\"Job\" PARAMTYPE=\"uint16\">"
                 "<VALUE>4</VALUE></PARAMVALUE></METHODRESPONSE>"));
    EXPECT_TRUE(noReturn.returnValue.isNull());
    EXPECT_TRUE(noReturn.outParameters[0].getValue() == CIMValue(Uint16(4)));
    OperationResponse empty = decodeResponseText(
        response("<IMETHODRESPONSE NAME=\"EnumerateInstanceNames\"></IMETHODRESPONSE>"));
    EXPECT_EQ(0u, empty.returnValue.getArraySize());
    OperationResponse error = decodeResponseText(
        response("<IMETHODRESPONSE NAME=\"GetInstance\"><ERROR CODE=\"6\" DESCRIPTION=\"gone\">"
                 "<INSTANCE CLASSNAME=\"CIM_Error\"/></ERROR></IMETHODRESPONSE>"));
    EXPECT_EQ(6u, error.errorCode);
    EXPECT_EQ("gone", text(error.errorDescription));
}

// ---- what is refused ----

TEST(CimXmlRefusal, BrokenAndHostileDocumentsAreRefusedWithTheirReason)
{
    // A method call whose GroupName is `name` as written.
    auto createGroup = [](const std::string& name) {
        return request("<METHODCALL NAME=\"CreateGroup\"><LOCALCLASSPATH>" + std::string(kZda) +
            "<CLASSNAME NAME=\"ZDA_ReplicationService\"/></LOCALCLASSPATH>"
            "<PARAMVALUE NAME=\"GroupName\" PARAMTYPE=\"string\"><VALUE>" +
            name + "</VALUE></PARAMVALUE></METHODCALL>");
    };
    // The same characters are plain text where references are not read, and
    // good references are read.
    for (const char* fine : {"g<!-- &#x1; -->1", "<![CDATA[g&#x1;]]>", "&#x67;&#49;"})
    {
        String name;
        ASSERT_NO_THROW(decodeRequestText(createGroup(fine)).parameters[0].getValue().get(name)) << fine;
        EXPECT_NE(text(name), "") << fine;
    }

    std::string valid = imethod(
        "DeleteClass", "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"A\"/></IPARAMVALUE>");
    decodeRequestText(valid);  // the base line is accepted
    const std::string call = valid.substr(
        valid.find("<IMETHODCALL"), valid.find("</SIMPLEREQ>") - valid.find("<IMETHODCALL"));

    std::string withNuls = imethod("DeleteClass", std::string(100000, '\0'));
    std::string nest;
    for (int i = 0; i < 100000; i++)
        nest += "<VALUE.ARRAY>";
    for (int i = 0; i < 100000; i++)
        nest += "</VALUE.ARRAY>";

    // Well-formed messages that ask for the impossible are refused with a
    // CIM error (`code`) answering the same message.
    const std::string classA = "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"A\"/></IPARAMVALUE>";
    const DecodeFailure cimError = DecodeFailure::NotValid;

    struct Case
    {
        const char* label;
        std::string xml;
        DecodeFailure failure;
        Uint32 code = 0;
    };
    std::vector<Case> cases = {
        {"empty", "", DecodeFailure::NotWellFormed},
        {"not xml", "GET / HTTP/1.1", DecodeFailure::NotWellFormed},
        {"unclosed", valid.substr(0, valid.size() - 7), DecodeFailure::NotWellFormed},
        {"mismatched", request("<IMETHODCALL NAME=\"X\"></METHODCALL>"), DecodeFailure::NotWellFormed},
        {"entity declaration",
            "<?xml version=\"1.0\"?><!DOCTYPE CIM [<!ENTITY a \"aaaaaaaaaa\">"
            "<!ENTITY b \"&a;&a;&a;&a;&a;&a;\">]>" +
                valid.substr(valid.find("<CIM")),
            DecodeFailure::NotWellFormed},
        {"external entity", "<!DOCTYPE CIM SYSTEM \"file:///etc/passwd\">" + valid.substr(valid.find("<CIM")),
            DecodeFailure::NotWellFormed},
        {"undeclared entity", request("<IMETHODCALL NAME=\"&xxe;\"/>"), DecodeFailure::NotValid},
        {"deep nesting", request(nest), DecodeFailure::LimitExceeded},
        {"huge attribute", request("<IMETHODCALL NAME=\"" + std::string(2 << 20, 'A') + "\"/>"),
            DecodeFailure::LimitExceeded},
        {"wrong root", "<HTML/>", DecodeFailure::NotValid},
        {"response as request", response("<IMETHODRESPONSE NAME=\"GetClass\"/>"), DecodeFailure::NotValid},
        {"cim version",
            "<CIM CIMVERSION=\"3.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
            "<SIMPLEREQ/></MESSAGE></CIM>",
            DecodeFailure::UnsupportedCimVersion},
        {"dtd version",
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"1.1\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
            "<SIMPLEREQ/></MESSAGE></CIM>",
            DecodeFailure::UnsupportedDtdVersion},
        {"protocol version",
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"2.0\">"
            "<SIMPLEREQ/></MESSAGE></CIM>",
            DecodeFailure::UnsupportedProtocolVersion},
        {"multiple requests", std::string(kHead) + "<MULTIREQ/>" + kTail, DecodeFailure::MultipleRequests},
        {"no namespace", request("<IMETHODCALL NAME=\"DeleteClass\"/>"), DecodeFailure::NotValid},
        {"bad class name",
            imethod("GetInstance",
                "<IPARAMVALUE NAME=\"InstanceName\"><INSTANCENAME CLASSNAME=\"9 bad\"/></IPARAMVALUE>"),
            DecodeFailure::NotValid},
        {"nul bytes", withNuls, DecodeFailure::NotWellFormed},
        {"not utf-8",
            request("<IMETHODCALL NAME=\"Get\xC0\xAF"
                    "Class\"/>"),
            DecodeFailure::NotWellFormed},
        {"utf-16 surrogate in utf-8", request("<IMETHODCALL NAME=\"\xED\xA0\x80\"/>"),
            DecodeFailure::NotWellFormed},
        {"control character", createGroup("a\x01"), DecodeFailure::NotWellFormed},
        {"U+FFFE", createGroup("a\xEF\xBF\xBE"), DecodeFailure::NotWellFormed},
        {"reference to a control character", createGroup("a&#x1;"), DecodeFailure::NotWellFormed},
        {"reference to NUL", createGroup("&#0;"), DecodeFailure::NotWellFormed},
        {"reference to a lone surrogate", createGroup("&#xD800;"), DecodeFailure::NotWellFormed},
        {"reference to U+FFFF", createGroup("&#65535;"), DecodeFailure::NotWellFormed},
        {"reference beyond Unicode", createGroup("&#x110000;"), DecodeFailure::NotWellFormed},
        {"reference in an attribute", request("<IMETHODCALL NAME=\"&#x1B;\"/>"),
            DecodeFailure::NotWellFormed},
        {"second call", request(call + call), DecodeFailure::NotValid},
        {"second SIMPLEREQ", valid.substr(0, valid.find("</MESSAGE>")) + "<SIMPLEREQ/>" + kTail,
            DecodeFailure::NotValid},
        {"second MESSAGE",
            valid.substr(0, valid.find("</CIM>")) + "<MESSAGE ID=\"2\" PROTOCOLVERSION=\"1.0\"/></CIM>",
            DecodeFailure::NotValid},
        {"unknown operation", imethod("Frobnicate"), cimError, CIM_ERR_NOT_SUPPORTED},
        {"missing parameter", imethod("GetClass"), cimError, CIM_ERR_INVALID_PARAMETER},
        {"unknown parameter",
            imethod("DeleteClass", classA + "<IPARAMVALUE NAME=\"Colour\"><VALUE>red</VALUE></IPARAMVALUE>"),
            cimError, CIM_ERR_INVALID_PARAMETER},
        {"value for a path",
            imethod("GetInstance", "<IPARAMVALUE NAME=\"InstanceName\"><VALUE>x</VALUE></IPARAMVALUE>"),
            cimError, CIM_ERR_INVALID_PARAMETER},
        {"flag that is not a boolean",
            imethod(
                "GetClass", classA + "<IPARAMVALUE NAME=\"LocalOnly\"><VALUE>maybe</VALUE></IPARAMVALUE>"),
            cimError, CIM_ERR_INVALID_PARAMETER},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        try
        {
            decodeRequestText(c.xml);
            ADD_FAILURE() << "accepted";
        }
        catch (const DecodeError& e)
        {
            EXPECT_EQ(int(c.failure), int(e.failure)) << e.what();
            EXPECT_EQ(0u, c.code) << "not a CIM error: " << e.what();
            EXPECT_STRNE("", e.what());
        }
        catch (const RequestRefused& e)
        {
            EXPECT_EQ(int(c.failure), int(cimError)) << e.what();
            EXPECT_STRNE("", e.what());
            if (c.code)
            {
                EXPECT_EQ(c.code, e.code) << e.what();
                EXPECT_EQ("77", e.response().messageId);
                EXPECT_EQ(c.code, e.response().errorCode);
            }
        }
    }
}

TEST(CimXmlRefusal, EveryTruncationOfAResponseIsRefusedCleanly)
{
    CIMInstance named = namedVolume();
    OperationResponse r;
    r.operation = Intrinsic::EnumerateInstances;
    r.returnValue = CIMValue(Array<CIMInstance>(2, named));
    std::string xml = encode(r);
    for (std::size_t n = 0; n + 1 < xml.size(); n++)
        failureOf(xml.substr(0, n), false);
}

TEST(CimXmlRefusal, EmbeddedObjectsNestOnlyAsDeepAsAllowed)
{
    CIMInstance inner = embeddedInstance();
    for (int i = 0; i < 6; i++)
    {
        CIMInstance outer("ZDA_Wrap");
        outer.addProperty(CIMProperty("Inner", CIMValue(inner)));
        inner = outer;
    }
    OperationResponse r;
    r.operation = Intrinsic::GetInstance;
    r.returnValue = CIMValue(inner);
    std::string xml = encode(r);
    DecodeLimits generous;
    generous.maxEmbeddingDepth = 10;
    EXPECT_NO_THROW(decodeResponse(xml.data(), xml.size(), generous));
    EXPECT_EQ(int(DecodeFailure::LimitExceeded), int(failureOf(xml, false)));
}

// ---- HTTP rules ----

TEST(CimXmlHttp, HeaderRules)
{
    for (const char* ok : {"application/xml", "text/xml", "application/xml; charset=\"utf-8\"",
             "text/xml;charset=UTF-8", "Application/XML ; CHARSET=utf-8"})
        EXPECT_TRUE(http::isXmlContentType(ok)) << ok;
    for (const char* bad : {"", "text/plain", "application/xml; charset=iso-8859-1", "application/xmlx",
             "text/html; charset=utf-8"})
        EXPECT_FALSE(http::isXmlContentType(bad)) << bad;

    std::size_t n = 0;
    EXPECT_TRUE(http::parseContentLength(" 1234 ", 1 << 20, n));
    EXPECT_EQ(1234u, n);
    EXPECT_TRUE(http::parseContentLength("0", 10, n));
    for (const char* bad : {"", "-1", "+5", "12a", "1 2", "99999999999999999999999999", "1025"})
        EXPECT_FALSE(http::parseContentLength(bad, 1024, n)) << bad;

    OperationRequest call;
    call.intrinsic = false;
    call.methodName = CIMName("Go");
    call.nameSpace = CIMNamespaceName("root/zda");
    call.target = volumePath();
    std::string object = http::escapeHeaderValue(http::cimObjectOf(call));
    EXPECT_EQ(std::string::npos, object.find(' '));
    EXPECT_EQ(http::cimObjectOf(call), http::unescapeHeaderValue(object));
    EXPECT_TRUE(http::headersMatch(call, "Go", object));
    EXPECT_FALSE(http::headersMatch(call, "Stop", object));
    EXPECT_FALSE(http::headersMatch(call, "Go", "root/zda:ZDA_StorageVolume.DeviceID=\"x\""));

    OperationRequest get = intrinsic(Intrinsic::GetClass);
    EXPECT_TRUE(http::headersMatch(get, "GetClass", "ROOT/zda"));
    EXPECT_FALSE(http::headersMatch(get, "GetClass", "root/other"));

    EXPECT_EQ("73-", http::extensionHeaderPrefix("http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=73"));
    EXPECT_EQ("", http::extensionHeaderPrefix("http://example.com/other ; ns=73"));
    EXPECT_EQ("", http::extensionHeaderPrefix("http://www.dmtf.org/cim/mapping/http/v1.0"));

    // How a document that is not well formed is answered is checked over the
    // wire, with the server; an unsupported DTD version is refused with 501.
    EXPECT_EQ(501u, http::refusalFor(DecodeFailure::UnsupportedDtdVersion).status);
    EXPECT_EQ("unsupported-dtd-version", http::refusalFor(DecodeFailure::UnsupportedDtdVersion).cimError);
}
