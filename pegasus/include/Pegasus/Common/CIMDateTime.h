// CIMDateTime: a point in time (time stamp) or a length of time (interval),
// with the 25-character CIM text forms
//   time stamp  yyyymmddhhmmss.mmmmmmsutc   (s is '+' or '-', utc in minutes)
//   interval    ddddddddhhmmss.mmmmmm:000
// Trailing digit positions may be wildcards ('*'), which print back as '*'
// and count as the lowest value of their field in arithmetic.
//
// A plain value; the default is the zero interval.
#ifndef Pegasus_CIMDateTime_h
#define Pegasus_CIMDateTime_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Array.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class PEGASUS_COMMON_LINKAGE CIMDateTime
{
public:
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    // A field value meaning "every value" (printed as asterisks).
    static const Uint32 WILDCARD;
#endif

    CIMDateTime();
    CIMDateTime(const CIMDateTime& x);
    // Parses as set() does.
    CIMDateTime(const String& str);
    // A time stamp usec microseconds after 0000-01-01 00:00:00 UTC (offset
    // +000), or an interval of usec microseconds. A time stamp in year 10000
    // or later, or an interval of 100 000 000 days or more, throws
    // DateTimeOutOfRangeException.
    CIMDateTime(Uint64 usec, Boolean isInterval);
#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    // numSignificantMicrosecondDigits (0-6) leading microsecond digits are
    // kept, the rest are wildcards; any field may be WILDCARD, which makes
    // every less significant field a wildcard too.
    CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
        Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset);
    CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
        Uint32 numSignificantMicrosecondDigits);
#endif
    ~CIMDateTime();

    CIMDateTime& operator=(const CIMDateTime& x);

    String toString() const;

    // Replaces the value by the parsed text. A wrong length, sign character,
    // separator, non-digit or an interval not ending in "000" throws
    // InvalidDateTimeFormatException; a field out of its range throws
    // DateTimeOutOfRangeException. The value is cleared first, so it is the
    // zero interval after a failure.
    void set(const String& str);
    void clear();

#ifdef PEGASUS_USE_EXPERIMENTAL_INTERFACES
    void setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
        Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset);
    void setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
        Uint32 numSignificantMicrosecondDigits);
    Boolean isTimeStamp() const;
#endif
    Boolean isInterval() const;
    Boolean isInterval();

    // The local time of this system, with its UTC offset.
    static CIMDateTime getCurrentDateTime();
    // finish - start in microseconds; a time stamp and an interval together
    // throw InvalidDateTimeFormatException.
    static Sint64 getDifference(CIMDateTime startTime, CIMDateTime finishTime);

    // Same kind and same instant (time stamps are compared in UTC) or length.
    Boolean equal(const CIMDateTime& x) const;
    // Interval length, or a time stamp's microseconds since
    // 0000-01-01 00:00:00 UTC.
    Uint64 toMicroSeconds() const;

    // Time stamp +/- interval, interval +/- interval, time stamp - time stamp
    // (an interval). Other combinations throw TypeMismatchException; a result
    // outside the representable range throws DateTimeOutOfRangeException.
    CIMDateTime operator+(const CIMDateTime& x) const;
    CIMDateTime& operator+=(const CIMDateTime& x);
    CIMDateTime operator-(const CIMDateTime& x) const;
    CIMDateTime& operator-=(const CIMDateTime& x);
    // Intervals only (TypeMismatchException otherwise); division by zero
    // throws Exception.
    CIMDateTime operator*(Uint64 num) const;
    CIMDateTime& operator*=(Uint64 num);
    CIMDateTime operator/(Uint64 num) const;
    CIMDateTime& operator/=(Uint64 num);
    Uint64 operator/(const CIMDateTime& cimDateTime) const;

    // Both operands of the same kind, else TypeMismatchException.
    Boolean operator<(const CIMDateTime& x) const;
    Boolean operator<=(const CIMDateTime& x) const;
    Boolean operator>(const CIMDateTime& x) const;
    Boolean operator>=(const CIMDateTime& x) const;
    Boolean operator!=(const CIMDateTime& x) const;

private:
    Sint64 _utcMicroSeconds() const;

    Uint64 _usec;       // interval length, or local time as written
    Sint32 _utcOffset;  // minutes east of UTC; 0 for intervals
    Boolean _interval;
    Uint32 _numWildcards;  // trailing digit positions printed as '*'
};

PEGASUS_COMMON_LINKAGE Boolean operator==(const CIMDateTime& x, const CIMDateTime& y);

PEGASUS_NAMESPACE_END

#endif
