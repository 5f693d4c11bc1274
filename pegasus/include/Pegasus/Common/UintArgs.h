// An unsigned integer argument that may be left out (null), as the pull
// operations' OperationTimeout is.
#ifndef Pegasus_UintArgs_h
#define Pegasus_UintArgs_h

#include <Pegasus/Common/Config.h>

PEGASUS_NAMESPACE_BEGIN

class Uint32Arg
{
public:
    Uint32Arg() : _value(0), _null(true) {}
    Uint32Arg(Uint32 value) : _value(value), _null(false) {}

    Uint32 getValue() const { return _value; }
    void setValue(Uint32 value)
    {
        _value = value;
        _null = false;
    }
    Boolean isNull() const { return _null; }
    void setNullValue()
    {
        _value = 0;
        _null = true;
    }

private:
    Uint32 _value;
    Boolean _null;
};

PEGASUS_NAMESPACE_END

#endif
