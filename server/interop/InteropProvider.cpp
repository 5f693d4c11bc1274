// The server's discovery provider. In the interop namespace it serves the
// object manager (hosted by the server's computer system) with its CIM-XML
// access, a CIM_Namespace for each namespace that the provider registrations
// name, the profiles that providers declare with
// PG_ProviderProfileCapabilities, and the associations between them and the
// elements that conform to them, which may live in other namespaces.
//
// Asked about an element in another namespace (as a client walks from an
// element to its profiles), it reads the registrations in the interop
// namespace and names the profiles with that namespace.
//
// Nothing is kept between requests: every request reads the registrations
// anew through the CIMOMHandle and asks the conforming classes for their
// instance names as the caller, so a client sees exactly the elements it may
// see.
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMOMHandle.h>
#include <Pegasus/Provider/ProviderException.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

PEGASUS_USING_PEGASUS;

namespace
{

const char* const ObjectManagerName = "zda-cimserver";
const char* const InteropNamespace = "root/PG_InterOp";
const char* const SystemClass = "CIM_ComputerSystem";
const Uint16 OrganizationOther = 1;
const Uint16 OrganizationSNIA = 11;

std::string folded(const String& s)
{
    std::string out(static_cast<const char*>(s.getCString()));
    for (char& c : out)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    return out;
}

// A property's value of an instance read from the registrations; the
// fallback when it is missing or null.
template <class T>
T valueOf(const CIMInstance& instance, const char* name, T fallback = T())
{
    Uint32 at = instance.findProperty(name);
    if (at == PEG_NOT_FOUND)
        return fallback;
    CIMValue v = instance.getProperty(at).getValue();
    if (v.isNull())
        return fallback;
    T out;
    v.get(out);
    return out;
}

CIMObjectPath localPath(const char* className, const Array<CIMKeyBinding>& keys)
{
    return CIMObjectPath(String(), CIMNamespaceName(), CIMName(className), keys);
}

// Whether two paths name the same object, whatever host and namespace they
// carry: the interop namespace has several names, and an object name comes
// with the one the client used.
bool sameObject(const CIMObjectPath& a, const CIMObjectPath& b)
{
    CIMObjectPath x(a), y(b);
    x.setHost(String());
    x.setNameSpace(CIMNamespaceName());
    y.setHost(String());
    y.setNameSpace(CIMNamespaceName());
    return x.identical(y);
}

struct Profile
{
    Uint16 organization = OrganizationSNIA;
    String organizationName;
    String name;
    String version;
    bool sub = false;
    Array<String> namespaces;
    Array<String> conforming;
    std::vector<std::string> referenced;   // folded names
    std::vector<std::size_t> subProfiles;  // indexes into the profile list
    CIMObjectPath path;
};

// Everything the provider serves for one request, built as it is asked for.
class Model
{
public:
    Model(CIMOMHandle& cimom, const OperationContext& context, const CIMObjectPath& request)
        : _cimom(cimom), _context(context), _interop(request.getNameSpace())
    {
        _host = request.getHost();
        if (_host.size() == 0)
        {
            char buffer[256] = {0};
            _host = gethostname(buffer, sizeof buffer - 1) == 0 && buffer[0] ? String(buffer)
                                                                             : String("localhost");
        }
    }

    // The instances of exactly `className` (no subclasses), each with its
    // path (no host, no namespace).
    Array<CIMInstance> instances(const CIMName& className)
    {
        const std::string cls = folded(className.getString());
        Array<CIMInstance> out;
        if (cls == "cim_computersystem")
        {
            out.append(system());
        }
        else if (cls == "cim_objectmanager")
        {
            out.append(objectManager());
        }
        else if (cls == "cim_objectmanagercommunicationmechanism")
        {
            out.append(mechanism());
        }
        else if (cls == "cim_namespace")
        {
            for (const String& ns : namespaces())
                out.append(namespaceInstance(ns));
        }
        else if (cls == "cim_registeredprofile" || cls == "cim_registeredsubprofile")
        {
            for (const Profile& p : profiles())
                if (p.sub == (cls == "cim_registeredsubprofile"))
                    out.append(profileInstance(p));
        }
        else if (cls == "cim_hostedservice")
        {
            out.append(link("CIM_HostedService", "Antecedent", system().getPath(), "Dependent",
                objectManager().getPath()));
        }
        else if (cls == "cim_commmechanismformanager")
        {
            out.append(link("CIM_CommMechanismForManager", "Antecedent", objectManager().getPath(),
                "Dependent", mechanism().getPath()));
        }
        else if (cls == "cim_namespaceinmanager")
        {
            for (const String& ns : namespaces())
                out.append(link("CIM_NamespaceInManager", "Antecedent", objectManager().getPath(),
                    "Dependent", namespaceInstance(ns).getPath()));
        }
        else if (cls == "cim_referencedprofile")
        {
            referencedProfiles(out);
        }
        else if (cls == "cim_subprofilerequiresprofile")
        {
            for (const Profile& p : profiles())
                for (std::size_t s : p.subProfiles)
                    out.append(link("CIM_SubProfileRequiresProfile", "Antecedent", p.path, "Dependent",
                        profiles()[s].path));
        }
        else if (cls == "cim_elementconformstoprofile")
        {
            for (const Profile& p : profiles())
                conformance(p, out);
        }
        return out;
    }

    // The links of ElementConformsToProfile that may hold `object`: those
    // of the profile it names, or of the profiles its class conforms to.
    // Only those profiles' elements are asked for.
    Array<CIMInstance> conformanceOf(const CIMObjectPath& object)
    {
        Array<CIMInstance> out;
        const std::string cls = folded(object.getClassName().getString());
        for (const Profile& p : profiles())
        {
            bool conforms = sameObject(p.path, object);
            for (Uint32 c = 0; !conforms && c < p.conforming.size(); ++c)
                conforms = folded(p.conforming[c]) == cls;
            if (conforms)
                conformance(p, out);
        }
        return out;
    }

    CIMOMHandle& cimom() { return _cimom; }
    const OperationContext& context() const { return _context; }

private:
    CIMInstance system()
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("CreationClassName", SystemClass, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("Name", _host, CIMKeyBinding::STRING));
        CIMInstance i(SystemClass);
        i.addProperty(CIMProperty("CreationClassName", String(SystemClass)));
        i.addProperty(CIMProperty("Name", _host));
        i.addProperty(CIMProperty("ElementName", _host));
        i.addProperty(CIMProperty("NameFormat", String("Other")));
        i.setPath(localPath(SystemClass, keys));
        return i;
    }

    // The keys every service and access point of the server shares.
    Array<CIMKeyBinding> hostedKeys(const char* className, const String& name) const
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("SystemCreationClassName", SystemClass, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("SystemName", _host, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("CreationClassName", className, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("Name", name, CIMKeyBinding::STRING));
        return keys;
    }

    static CIMInstance withKeys(const char* className, const Array<CIMKeyBinding>& keys)
    {
        CIMInstance i{CIMName(className)};
        for (Uint32 k = 0; k < keys.size(); ++k)
            i.addProperty(CIMProperty(keys[k].getName(), String(keys[k].getValue())));
        i.setPath(localPath(className, keys));
        return i;
    }

    CIMInstance objectManager()
    {
        CIMInstance i = withKeys("CIM_ObjectManager", hostedKeys("CIM_ObjectManager", ObjectManagerName));
        i.addProperty(CIMProperty("ElementName", String("ZDA CIM server")));
        i.addProperty(CIMProperty("Description", String("The CIM server of the ZDA array.")));
        i.addProperty(CIMProperty("Started", Boolean(true)));
        i.addProperty(CIMProperty("EnabledState", Uint16(2)));  // Enabled
        Array<Uint16> status;
        status.append(2);  // OK
        i.addProperty(CIMProperty("OperationalStatus", status));
        i.addProperty(CIMProperty("GatherStatisticalData", Boolean(false)));
        return i;
    }

    CIMInstance mechanism()
    {
        const char* cls = "CIM_ObjectManagerCommunicationMechanism";
        CIMInstance i = withKeys(cls, hostedKeys(cls, "CIM-XML"));
        i.addProperty(CIMProperty("CommunicationMechanism", Uint16(2)));  // CIM-XML
        Array<Uint16> functions;
        // Basic Read, Basic Write, Instance Manipulation, Association Traversal,
        // Pulled Read (the Open*/Pull* operations; no EnumerationCount, no queries).
        for (Uint16 f : {2, 3, 5, 6, 10})
            functions.append(f);
        i.addProperty(CIMProperty("FunctionalProfilesSupported", functions));
        i.addProperty(CIMProperty("MultipleOperationsSupported", Boolean(false)));
        Array<Uint16> authentication;
        authentication.append(3);  // Basic
        i.addProperty(CIMProperty("AuthenticationMechanismsSupported", authentication));
        i.addProperty(CIMProperty("Version", String("1.0")));
        return i;
    }

    CIMInstance namespaceInstance(const String& name)
    {
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding("SystemCreationClassName", SystemClass, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("SystemName", _host, CIMKeyBinding::STRING));
        keys.append(
            CIMKeyBinding("ObjectManagerCreationClassName", "CIM_ObjectManager", CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("ObjectManagerName", ObjectManagerName, CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("CreationClassName", "CIM_Namespace", CIMKeyBinding::STRING));
        keys.append(CIMKeyBinding("Name", name, CIMKeyBinding::STRING));
        CIMInstance i = withKeys("CIM_Namespace", keys);
        i.addProperty(CIMProperty("ClassInfo", Uint16(1)));  // Other
        i.addProperty(CIMProperty("DescriptionOfClassInfo", String("CIM 2.41")));
        i.addProperty(CIMProperty("ClassType", Uint16(2)));  // CIM
        i.addProperty(CIMProperty("ClassTypeVersion", String("2.41.0")));
        return i;
    }

    CIMInstance profileInstance(const Profile& p)
    {
        CIMInstance i{p.path.getClassName()};
        i.addProperty(CIMProperty("InstanceID", String(p.path.getKeyBindings()[0].getValue())));
        i.addProperty(CIMProperty("RegisteredOrganization", p.organization));
        if (p.organization == OrganizationOther)
            i.addProperty(CIMProperty("OtherRegisteredOrganization", p.organizationName));
        i.addProperty(CIMProperty("RegisteredName", p.name));
        i.addProperty(CIMProperty("RegisteredVersion", p.version));
        i.addProperty(CIMProperty("SpecificationType", Uint16(2)));  // Profile
        Array<Uint16> advertised;
        advertised.append(2);  // Not Advertised: the server takes part in no service location protocol
        i.addProperty(CIMProperty("AdvertiseTypes", advertised));
        i.addProperty(CIMProperty("ElementName", p.name));
        i.setPath(p.path);
        return i;
    }

    static CIMInstance link(const char* className, const char* role1, const CIMObjectPath& ref1,
        const char* role2, const CIMObjectPath& ref2)
    {
        CIMInstance i{CIMName(className)};
        i.addProperty(CIMProperty(role1, ref1));
        i.addProperty(CIMProperty(role2, ref2));
        Array<CIMKeyBinding> keys;
        keys.append(CIMKeyBinding(role1, CIMValue(ref1)));
        keys.append(CIMKeyBinding(role2, CIMValue(ref2)));
        i.setPath(localPath(className, keys));
        return i;
    }

    // The namespaces named by the provider registrations, in the order
    // first seen. root/PG_Internal is the server's own: its providers serve
    // other providers, never clients, so it is not announced.
    const std::vector<String>& namespaces()
    {
        if (_namespacesRead)
            return _namespaces;
        std::set<std::string> seen{folded("root/PG_Internal")};
        auto add = [&](const Array<String>& names) {
            for (Uint32 n = 0; n < names.size(); ++n)
                if (names[n].size() && seen.insert(folded(names[n])).second)
                    _namespaces.push_back(names[n]);
        };
        for (const char* cls : {"PG_ProviderCapabilities", "PG_ProviderProfileCapabilities"})
        {
            Array<CIMInstance> regs = _cimom.enumerateInstances(
                _context, _interop, cls, true, false, false, false, CIMPropertyList());
            for (Uint32 r = 0; r < regs.size(); ++r)
                add(valueOf<Array<String>>(regs[r], "Namespaces"));
        }
        _namespacesRead = true;
        return _namespaces;
    }

    static String organizationText(Uint16 organization, const String& other)
    {
        if (organization == OrganizationSNIA)
            return "SNIA";
        if (organization == 2)
            return "DMTF";
        return other.size() ? other : String("Other");
    }

    // The registered profiles, sub-profiles after the profiles; a
    // sub-profile that several profiles name is one instance.
    const std::vector<Profile>& profiles()
    {
        if (_profilesRead)
            return _profiles;
        _profilesRead = true;
        Array<CIMInstance> regs = registrations();
        std::map<std::string, std::size_t> byId;
        auto add = [&](Profile p) -> std::size_t {
            String id = organizationText(p.organization, p.organizationName) + "+" + p.name + "+" + p.version;
            auto found = byId.find(folded(id));
            if (found != byId.end())
                return found->second;
            Array<CIMKeyBinding> keys;
            keys.append(CIMKeyBinding("InstanceID", id, CIMKeyBinding::STRING));
            p.path = localPath(p.sub ? "CIM_RegisteredSubProfile" : "CIM_RegisteredProfile", keys);
            if (_elsewhere)
                p.path.setNameSpace(_interop);
            _profiles.push_back(p);
            return byId[folded(id)] = _profiles.size() - 1;
        };
        std::vector<std::pair<std::size_t, CIMInstance>> withSubs;
        for (Uint32 r = 0; r < regs.size(); ++r)
        {
            Profile p;
            p.organization = valueOf<Uint16>(regs[r], "RegisteredOrganization", OrganizationSNIA);
            p.organizationName = valueOf<String>(regs[r], "OtherRegisteredOrganization");
            p.name = valueOf<String>(regs[r], "RegisteredName");
            p.version = valueOf<String>(regs[r], "RegisteredVersion");
            if (p.name.size() == 0 || p.version.size() == 0)
                continue;  // not a usable registration
            p.namespaces = valueOf<Array<String>>(regs[r], "Namespaces");
            p.conforming = valueOf<Array<String>>(regs[r], "ConformingElements");
            Array<String> referenced = valueOf<Array<String>>(regs[r], "ReferencedProfiles");
            for (Uint32 n = 0; n < referenced.size(); ++n)
                p.referenced.push_back(folded(referenced[n]));
            withSubs.emplace_back(add(p), regs[r]);
        }
        for (auto& [index, reg] : withSubs)
        {
            Array<String> names = valueOf<Array<String>>(reg, "SubProfiles");
            Array<String> versions = valueOf<Array<String>>(reg, "SubProfileVersions");
            for (Uint32 s = 0; s < names.size(); ++s)
            {
                Profile sub;
                sub.sub = true;
                sub.organization = _profiles[index].organization;
                sub.organizationName = _profiles[index].organizationName;
                sub.name = names[s];
                sub.version = s < versions.size() && versions[s].size() ? versions[s]
                                                                        : _profiles[index].version;
                if (sub.name.size() == 0)
                    continue;
                std::size_t at = add(sub);
                _profiles[index].subProfiles.push_back(at);
            }
        }
        return _profiles;
    }

    // The profile registrations. A namespace without the registration class
    // is an element's: they are read in the interop namespace then.
    Array<CIMInstance> registrations()
    {
        const CIMName regClass("PG_ProviderProfileCapabilities");
        try
        {
            return _cimom.enumerateInstances(
                _context, _interop, regClass, true, false, false, false, CIMPropertyList());
        }
        catch (const CIMException& e)
        {
            if (e.getCode() != CIM_ERR_INVALID_CLASS)
                throw;
        }
        _interop = CIMNamespaceName(InteropNamespace);
        _elsewhere = true;
        return _cimom.enumerateInstances(
            _context, _interop, regClass, true, false, false, false, CIMPropertyList());
    }

    // A profile refers to the profiles its registration names (of its own
    // organization); the server's own profile refers to every other
    // profile that no registration refers to.
    void referencedProfiles(Array<CIMInstance>& out)
    {
        const std::vector<Profile>& all = profiles();
        std::set<std::size_t> referencedByOthers;
        const Profile* server = nullptr;
        for (const Profile& p : all)
        {
            if (!p.sub && p.organization == OrganizationSNIA && folded(p.name) == "server")
                server = &p;
            for (const std::string& name : p.referenced)
                for (std::size_t t = 0; t < all.size(); ++t)
                    if (!all[t].sub && &all[t] != &p && all[t].organization == p.organization &&
                        folded(all[t].name) == name)
                    {
                        out.append(
                            link("CIM_ReferencedProfile", "Antecedent", all[t].path, "Dependent", p.path));
                        referencedByOthers.insert(t);
                    }
        }
        if (!server)
            return;
        for (std::size_t t = 0; t < all.size(); ++t)
            if (!all[t].sub && &all[t] != server && !referencedByOthers.count(t))
                out.append(
                    link("CIM_ReferencedProfile", "Antecedent", all[t].path, "Dependent", server->path));
    }

    void conformance(const Profile& p, Array<CIMInstance>& out)
    {
        for (Uint32 n = 0; n < p.namespaces.size(); ++n)
            for (Uint32 c = 0; c < p.conforming.size(); ++c)
            {
                Array<CIMObjectPath> elements = _cimom.enumerateInstanceNames(
                    _context, CIMNamespaceName(p.namespaces[n]), p.conforming[c]);
                for (Uint32 e = 0; e < elements.size(); ++e)
                {
                    CIMObjectPath element = elements[e];
                    if (element.getNameSpace().isNull())
                        element.setNameSpace(CIMNamespaceName(p.namespaces[n]));
                    out.append(link("CIM_ElementConformsToProfile", "ConformantStandard", p.path,
                        "ManagedElement", element));
                }
            }
    }

    CIMOMHandle& _cimom;
    const OperationContext& _context;
    CIMNamespaceName _interop;
    bool _elsewhere = false;  // asked from an element's namespace
    String _host;
    bool _namespacesRead = false;
    std::vector<String> _namespaces;
    bool _profilesRead = false;
    std::vector<Profile> _profiles;
};

class InteropProvider : public CIMInstanceProvider, public CIMAssociationProvider
{
public:
    void initialize(CIMOMHandle& cimom) override { _cimom = cimom; }
    void terminate() override { delete this; }

    void getInstance(const OperationContext& context, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, ref);
        Array<CIMInstance> candidates = ref.getClassName().equal("CIM_ElementConformsToProfile")
            ? model.conformanceOf(profileIn(ref))
            : model.instances(ref.getClassName());
        for (Uint32 i = 0; i < candidates.size(); ++i)
            if (sameObject(candidates[i].getPath(), ref))
            {
                handler.deliver(candidates[i]);
                handler.complete();
                return;
            }
        throw CIMObjectNotFoundException(ref.toString());
    }

    void enumerateInstances(const OperationContext& context, const CIMObjectPath& ref, const Boolean,
        const Boolean, const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, ref);
        handler.deliver(model.instances(ref.getClassName()));
        handler.complete();
    }

    void enumerateInstanceNames(const OperationContext& context, const CIMObjectPath& ref,
        ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, ref);
        Array<CIMInstance> all = model.instances(ref.getClassName());
        for (Uint32 i = 0; i < all.size(); ++i)
            handler.deliver(all[i].getPath());
        handler.complete();
    }

    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("The interop classes are read-only.");
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("The interop classes are read-only.");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("The interop classes are read-only.");
    }

    void associators(const OperationContext& context, const CIMObjectPath& object, const CIMName& association,
        const CIMName& resultClass, const String& role, const String& resultRole,
        const Boolean includeQualifiers, const Boolean includeClassOrigin,
        const CIMPropertyList& propertyList, ObjectResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, object);
        farEnds(model, object, association, resultClass, role, resultRole, [&](const CIMObjectPath& far) {
            CIMNamespaceName ns = far.getNameSpace().isNull() ? object.getNameSpace() : far.getNameSpace();
            CIMInstance found;
            try
            {
                found = _cimom.getInstance(
                    context, ns, far, false, includeQualifiers, includeClassOrigin, propertyList);
            }
            catch (const CIMException& e)
            {
                // An element that went away since it was listed is no result.
                if (e.getCode() != CIM_ERR_NOT_FOUND)
                    throw;
                return;
            }
            CIMObjectPath path = far;
            if (path.getNameSpace().isNull())
                path.setNameSpace(ns);
            found.setPath(path);
            handler.deliver(CIMObject(found));
        });
        handler.complete();
    }

    void associatorNames(const OperationContext& context, const CIMObjectPath& object,
        const CIMName& association, const CIMName& resultClass, const String& role, const String& resultRole,
        ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, object);
        farEnds(model, object, association, resultClass, role, resultRole,
            [&](const CIMObjectPath& far) { handler.deliver(far); });
        handler.complete();
    }

    void references(const OperationContext& context, const CIMObjectPath& object, const CIMName& association,
        const String& role, const Boolean, const Boolean, const CIMPropertyList&,
        ObjectResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, object);
        Array<CIMInstance> links = linksOf(model, object, association);
        for (Uint32 l = 0; l < links.size(); ++l)
            if (nearEnd(links[l], object, role) != PEG_NOT_FOUND)
                handler.deliver(CIMObject(links[l]));
        handler.complete();
    }

    void referenceNames(const OperationContext& context, const CIMObjectPath& object,
        const CIMName& association, const String& role, ObjectPathResponseHandler& handler) override
    {
        handler.processing();
        Model model(_cimom, context, object);
        Array<CIMInstance> links = linksOf(model, object, association);
        for (Uint32 l = 0; l < links.size(); ++l)
            if (nearEnd(links[l], object, role) != PEG_NOT_FOUND)
                handler.deliver(links[l].getPath());
        handler.complete();
    }

private:
    // The profile an ElementConformsToProfile path names.
    static CIMObjectPath profileIn(const CIMObjectPath& link)
    {
        const Array<CIMKeyBinding>& keys = link.getKeyBindings();
        for (Uint32 k = 0; k < keys.size(); ++k)
            if (keys[k].getName().equal("ConformantStandard"))
            {
                try
                {
                    return CIMObjectPath(keys[k].getValue());
                }
                catch (const Exception&)
                {
                    break;
                }
            }
        return CIMObjectPath();
    }

    static Array<CIMInstance> linksOf(Model& model, const CIMObjectPath& object, const CIMName& association)
    {
        return association.equal("CIM_ElementConformsToProfile") ? model.conformanceOf(object)
                                                                 : model.instances(association);
    }

    // The index of the reference of `link` that holds `object` (and is
    // named `role`, when given), or PEG_NOT_FOUND.
    static Uint32 nearEnd(const CIMInstance& link, const CIMObjectPath& object, const String& role)
    {
        for (Uint32 p = 0; p < link.getPropertyCount(); ++p)
        {
            CIMConstProperty ref = link.getProperty(p);
            if (ref.getType() != CIMTYPE_REFERENCE)
                continue;
            if (role.size() && !String::equalNoCase(role, ref.getName().getString()))
                continue;
            CIMObjectPath held;
            ref.getValue().get(held);
            if (sameObject(held, object))
                return p;
        }
        return PEG_NOT_FOUND;
    }

    // Whether `className` of namespace `ns` is `ancestor` or derives from it.
    bool isA(const OperationContext& context, const CIMNamespaceName& ns, const CIMName& className,
        const CIMName& ancestor, std::map<std::string, std::set<std::string>>& cache)
    {
        const std::string key = folded(ns.getString());
        auto found = cache.find(key);
        if (found == cache.end())
        {
            std::set<std::string> names;
            try
            {
                Array<CIMName> below = _cimom.enumerateClassNames(context, ns, ancestor, true);
                for (Uint32 i = 0; i < below.size(); ++i)
                    names.insert(folded(below[i].getString()));
                names.insert(folded(ancestor.getString()));
            }
            catch (const CIMException&)
            {
                // The class is unknown there: nothing in that namespace is one.
            }
            found = cache.emplace(key, std::move(names)).first;
        }
        return found->second.count(folded(className.getString())) != 0;
    }

    void farEnds(Model& model, const CIMObjectPath& object, const CIMName& association,
        const CIMName& resultClass, const String& role, const String& resultRole,
        const std::function<void(const CIMObjectPath&)>& emit)
    {
        std::map<std::string, std::set<std::string>> classes;
        Array<CIMInstance> links = linksOf(model, object, association);
        for (Uint32 l = 0; l < links.size(); ++l)
        {
            Uint32 near = nearEnd(links[l], object, role);
            if (near == PEG_NOT_FOUND)
                continue;
            for (Uint32 p = 0; p < links[l].getPropertyCount(); ++p)
            {
                CIMConstProperty ref = links[l].getProperty(p);
                if (p == near || ref.getType() != CIMTYPE_REFERENCE)
                    continue;
                if (resultRole.size() && !String::equalNoCase(resultRole, ref.getName().getString()))
                    continue;
                CIMObjectPath far;
                ref.getValue().get(far);
                CIMNamespaceName ns = far.getNameSpace().isNull() ? object.getNameSpace()
                                                                  : far.getNameSpace();
                if (!resultClass.isNull() &&
                    !isA(model.context(), ns, far.getClassName(), resultClass, classes))
                    continue;
                emit(far);
            }
        }
    }

    CIMOMHandle _cimom;
};

}  // namespace

PEGASUS_NAMESPACE_BEGIN
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& name)
{
    if (String::equalNoCase(name, "ZDA_InteropProvider"))
        return new InteropProvider;
    return 0;
}
PEGASUS_NAMESPACE_END
