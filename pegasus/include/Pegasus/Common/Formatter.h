// Substitution of numbered arguments ($0 .. $9) into message texts.
#ifndef Pegasus_Formatter_h
#define Pegasus_Formatter_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE Formatter
{
public:
    // One argument value; converts implicitly from the usual types.
    class PEGASUS_COMMON_LINKAGE Arg
    {
    public:
        enum Type
        {
            VOIDT,
            STRING,
            BOOLEAN,
            INTEGER,
            UINTEGER,
            LINTEGER,
            ULINTEGER,
            REAL
        };

        Arg() : _type(VOIDT), _integer(0) {}
        Arg(const String& x) : _string(x), _type(STRING), _integer(0) {}
        Arg(const char* x) : _string(x), _type(STRING), _integer(0) {}
        Arg(Boolean x) : _type(BOOLEAN), _boolean(x) {}
        Arg(Sint32 x) : _type(INTEGER), _integer(x) {}
        Arg(Uint32 x) : _type(UINTEGER), _uinteger(x) {}
        Arg(Sint64 x) : _type(LINTEGER), _lInteger(x) {}
        Arg(Uint64 x) : _type(ULINTEGER), _lUInteger(x) {}
        Arg(Real64 x) : _type(REAL), _real(x) {}

        // Text of the value; VOIDT gives "".
        String toString() const;
        Type getType() const { return _type; }

    private:
        String _string;
        Type _type;
        union
        {
            Sint32 _integer;
            Uint32 _uinteger;
            Real64 _real;
            Boolean _boolean;
            Sint64 _lInteger;
            Uint64 _lUInteger;
        };
    };

    // Replaces $0..$9 by the arguments' texts; "\x" gives x literally.
    static String format(const String& formatString, const Arg& arg0 = Arg(), const Arg& arg1 = Arg(),
        const Arg& arg2 = Arg(), const Arg& arg3 = Arg(), const Arg& arg4 = Arg(), const Arg& arg5 = Arg(),
        const Arg& arg6 = Arg(), const Arg& arg7 = Arg(), const Arg& arg8 = Arg(), const Arg& arg9 = Arg());
};

PEGASUS_NAMESPACE_END

#endif
