// CIMFlavor: the set of flavors carried by a qualifier (how it propagates to
// subclasses and instances, whether it may be overridden, whether it is
// translatable). A plain value: copies are independent.
#ifndef Pegasus_CIMFlavor_h
#define Pegasus_CIMFlavor_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMFlavor
{
public:
    // The empty set.
    CIMFlavor();
    CIMFlavor(const CIMFlavor& flavor);
    CIMFlavor& operator=(const CIMFlavor& flavor);

    // Adds (set union) or removes every flavor of `flavor`.
    void addFlavor(const CIMFlavor& flavor);
    void removeFlavor(const CIMFlavor& flavor);
    // True when every flavor of `flavor` is present; the empty set is in
    // every set.
    Boolean hasFlavor(const CIMFlavor& flavor) const;
    Boolean equal(const CIMFlavor& flavor) const;
    CIMFlavor operator+(const CIMFlavor& flavor) const;
    // The flavor keywords present, in MOF spelling, separated by one blank
    // (for example "OVERRIDABLE TOSUBCLASS"); "" for the empty set.
    String toString() const;

    static const CIMFlavor NONE;
    static const CIMFlavor OVERRIDABLE;
    static const CIMFlavor ENABLEOVERRIDE;  // same as OVERRIDABLE
    static const CIMFlavor DISABLEOVERRIDE;
    static const CIMFlavor TOSUBCLASS;
    static const CIMFlavor RESTRICTED;
    static const CIMFlavor TOINSTANCE;
    static const CIMFlavor TRANSLATABLE;
    // What a qualifier gets when nothing else is said: OVERRIDABLE + TOSUBCLASS.
    static const CIMFlavor DEFAULTS;

private:
    // constexpr so that the constants above are initialised before any
    // dynamic initialisation that might read them.
    constexpr explicit CIMFlavor(Uint32 bits) : _bits(bits) {}
    Uint32 _bits;
};

PEGASUS_NAMESPACE_END

#endif
