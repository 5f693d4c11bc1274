// CIMValue: a typed CIM value, scalar or array, possibly null.
//
// A plain value: copies share one representation until one of them is
// changed, so copies may be used and changed in different threads; one
// CIMValue object must not be changed by two threads at once. A default value is a null boolean scalar. Object and instance
// values are cloned when stored and again when read, so a value never
// aliases the caller's object.
//
// Overload traps: CIMValue("text") is the boolean true (a pointer converts to
// bool before a String is considered); write CIMValue(String("text")).
// CIMValue(int) is a sint32 value. long and size_t arguments are ambiguous
// and do not compile: cast to the wanted CIM type.
#ifndef Pegasus_CIMValue_h
#define Pegasus_CIMValue_h

#include <memory>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/CIMType.h>
#include <Pegasus/Common/CIMDateTime.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class CIMObject;
class CIMInstance;
struct CIMValueRep;

class PEGASUS_COMMON_LINKAGE CIMValue
{
public:
    // Null boolean scalar.
    CIMValue();
    // Null value of the given type. For an array, getArraySize() reports
    // arraySize.
    CIMValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);
    // Non-null values of the matching type. Object and instance values
    // (and arrays of them) are cloned; an uninitialized one throws
    // UninitializedObjectException.
    CIMValue(Boolean x);
    CIMValue(Uint8 x);
    CIMValue(Sint8 x);
    CIMValue(Uint16 x);
    CIMValue(Sint16 x);
    CIMValue(Uint32 x);
    CIMValue(Sint32 x);
    CIMValue(Uint64 x);
    CIMValue(Sint64 x);
    CIMValue(Real32 x);
    CIMValue(Real64 x);
    CIMValue(const Char16& x);
    CIMValue(const String& x);
    CIMValue(const CIMDateTime& x);
    CIMValue(const CIMObjectPath& x);
    CIMValue(const CIMObject& x);
    CIMValue(const CIMInstance& x);
    CIMValue(const Array<Boolean>& x);
    CIMValue(const Array<Uint8>& x);
    CIMValue(const Array<Sint8>& x);
    CIMValue(const Array<Uint16>& x);
    CIMValue(const Array<Sint16>& x);
    CIMValue(const Array<Uint32>& x);
    CIMValue(const Array<Sint32>& x);
    CIMValue(const Array<Uint64>& x);
    CIMValue(const Array<Sint64>& x);
    CIMValue(const Array<Real32>& x);
    CIMValue(const Array<Real64>& x);
    CIMValue(const Array<Char16>& x);
    CIMValue(const Array<String>& x);
    CIMValue(const Array<CIMDateTime>& x);
    CIMValue(const Array<CIMObjectPath>& x);
    CIMValue(const Array<CIMObject>& x);
    CIMValue(const Array<CIMInstance>& x);
#ifdef PEGASUS_USE_DEPRECATED_INTERFACES
    // A sint8 value.
    CIMValue(char x);
    CIMValue(const Array<char>& x);
#endif
    CIMValue(const CIMValue& x);
    // Takes over x's value; x is left null, as if cleared.
    CIMValue(CIMValue&& x) noexcept;
    ~CIMValue();

    CIMValue& operator=(const CIMValue& x);
    CIMValue& operator=(CIMValue&& x) noexcept;
    void assign(const CIMValue& x);
    // Back to the null boolean scalar.
    void clear();

    // Same type and same array-ness.
    Boolean typeCompatible(const CIMValue& x) const;
    Boolean isArray() const;
    Boolean isNull() const;
    // Element count of an array (of a null array: the size it was made
    // with); 0 for a scalar.
    Uint32 getArraySize() const;
    CIMType getType() const;

    void setNullValue(CIMType type, Boolean isArray, Uint32 arraySize = 0);

    // Replace type and value with a non-null value (objects are cloned).
    void set(Boolean x);
    void set(Uint8 x);
    void set(Sint8 x);
    void set(Uint16 x);
    void set(Sint16 x);
    void set(Uint32 x);
    void set(Sint32 x);
    void set(Uint64 x);
    void set(Sint64 x);
    void set(Real32 x);
    void set(Real64 x);
    void set(const Char16& x);
    void set(const String& x);
    void set(const CIMDateTime& x);
    void set(const CIMObjectPath& x);
    void set(const CIMObject& x);
    void set(const CIMInstance& x);
    void set(const Array<Boolean>& x);
    void set(const Array<Uint8>& x);
    void set(const Array<Sint8>& x);
    void set(const Array<Uint16>& x);
    void set(const Array<Sint16>& x);
    void set(const Array<Uint32>& x);
    void set(const Array<Sint32>& x);
    void set(const Array<Uint64>& x);
    void set(const Array<Sint64>& x);
    void set(const Array<Real32>& x);
    void set(const Array<Real64>& x);
    void set(const Array<Char16>& x);
    void set(const Array<String>& x);
    void set(const Array<CIMDateTime>& x);
    void set(const Array<CIMObjectPath>& x);
    void set(const Array<CIMObject>& x);
    void set(const Array<CIMInstance>& x);
#ifdef PEGASUS_USE_DEPRECATED_INTERFACES
    void set(char x);
    void set(const Array<char>& x);
#endif

    // Reading: when the stored type or array-ness differs from x's, throws
    // TypeMismatchException, also when the value is null (so reading a
    // default value as a String throws). A null value of the right type
    // leaves x unchanged. Objects and instances are returned as clones;
    // CIMTYPE_OBJECT and CIMTYPE_INSTANCE are distinct types here.
    void get(Boolean& x) const;
    void get(Uint8& x) const;
    void get(Sint8& x) const;
    void get(Uint16& x) const;
    void get(Sint16& x) const;
    void get(Uint32& x) const;
    void get(Sint32& x) const;
    void get(Uint64& x) const;
    void get(Sint64& x) const;
    void get(Real32& x) const;
    void get(Real64& x) const;
    void get(Char16& x) const;
    void get(String& x) const;
    void get(CIMDateTime& x) const;
    void get(CIMObjectPath& x) const;
    void get(CIMObject& x) const;
    void get(CIMInstance& x) const;
    void get(Array<Boolean>& x) const;
    void get(Array<Uint8>& x) const;
    void get(Array<Sint8>& x) const;
    void get(Array<Uint16>& x) const;
    void get(Array<Sint16>& x) const;
    void get(Array<Uint32>& x) const;
    void get(Array<Sint32>& x) const;
    void get(Array<Uint64>& x) const;
    void get(Array<Sint64>& x) const;
    void get(Array<Real32>& x) const;
    void get(Array<Real64>& x) const;
    void get(Array<Char16>& x) const;
    void get(Array<String>& x) const;
    void get(Array<CIMDateTime>& x) const;
    void get(Array<CIMObjectPath>& x) const;
    void get(Array<CIMObject>& x) const;
    void get(Array<CIMInstance>& x) const;
#ifdef PEGASUS_USE_DEPRECATED_INTERFACES
    void get(char& x) const;
    void get(Array<char>& x) const;
#endif

    // Same type, array-ness, null-ness and value.
    Boolean equal(const CIMValue& x) const;

    // Null gives "". Booleans TRUE/FALSE, integers in decimal, reals in
    // exponent form, date-times in their text form, references as path text.
    // Array elements are each followed by one blank ("5 5 ").
    String toString() const;

private:
    friend struct CIMValueAccess;
    std::shared_ptr<const CIMValueRep> _rep;
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMValue& x, const CIMValue& y);
PEGASUS_COMMON_LINKAGE Boolean operator!=(const CIMValue& x, const CIMValue& y);

PEGASUS_NAMESPACE_END

// Completes CIMObject and CIMInstance for users of the object and instance
// members. Included last: the object model's headers include this one.
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMInstance.h>

#endif
