#ifndef PEGASUS_USE_EXPERIMENTAL_INTERFACES
#define PEGASUS_USE_EXPERIMENTAL_INTERFACES
#endif
#include <Pegasus/Common/CIMDateTime.h>

#include <cstdio>
#include <ctime>
#include <string>

PEGASUS_NAMESPACE_BEGIN

const Uint32 CIMDateTime::WILDCARD = Uint32(-1);

namespace
{

const Uint64 USEC_PER_SECOND = 1000000ULL;
const Uint64 USEC_PER_MINUTE = 60ULL * USEC_PER_SECOND;
const Uint64 USEC_PER_HOUR = 60ULL * USEC_PER_MINUTE;
const Uint64 USEC_PER_DAY = 24ULL * USEC_PER_HOUR;

// Proleptic Gregorian calendar, days relative to 1970-01-01.
Sint64 daysFromCivil(Sint64 y, unsigned m, unsigned d)
{
    y -= m <= 2;
    const Sint64 era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<Sint64>(doe) - 719468;
}

void civilFromDays(Sint64 z, Uint32& year, Uint32& month, Uint32& day)
{
    z += 719468;
    const Sint64 era = (z >= 0 ? z : z - 146096) / 146097;
    const unsigned doe = static_cast<unsigned>(z - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const Sint64 y = static_cast<Sint64>(yoe) + era * 400;
    const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const unsigned mp = (5 * doy + 2) / 153;
    day = doy - (153 * mp + 2) / 5 + 1;
    month = mp < 10 ? mp + 3 : mp - 9;
    year = Uint32(y + (month <= 2));
}

const Sint64 DAY_OF_YEAR_ZERO = daysFromCivil(0, 1, 1);

// Microseconds from 0000-01-01 00:00 to the start of 10000-01-01.
const Uint64 TIME_STAMP_LIMIT = Uint64(daysFromCivil(10000, 1, 1) - DAY_OF_YEAR_ZERO) * USEC_PER_DAY;
// An interval's day count has 8 digits.
const Uint64 INTERVAL_LIMIT = 100000000ULL * USEC_PER_DAY;

Uint32 daysInMonth(Uint32 year, Uint32 month)
{
    static const Uint32 days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

// The 20 digit positions of the text form, most significant first.
const Uint32 DIGIT_POSITIONS[20] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 15, 16, 17, 18, 19, 20};

void outOfRange(const char* what)
{
    throw DateTimeOutOfRangeException(String(what));
}

struct Fields
{
    Uint32 yearOrDays, month, day, hours, minutes, seconds, microseconds;
};

Uint64 toUsec(const Fields& f, bool interval)
{
    Uint64 days = interval ? Uint64(f.yearOrDays)
                           : Uint64(daysFromCivil(f.yearOrDays, f.month, f.day) - DAY_OF_YEAR_ZERO);
    return days * USEC_PER_DAY + f.hours * USEC_PER_HOUR + f.minutes * USEC_PER_MINUTE +
        f.seconds * USEC_PER_SECOND + f.microseconds;
}

Uint32 fieldValue(const char* text, Uint32 begin, Uint32 length)
{
    Uint32 value = 0;
    for (Uint32 i = begin; i < begin + length; i++)
        value = value * 10 + Uint32(text[i] - '0');
    return value;
}

// The text for experimental field-wise construction; '*' for WILDCARD fields
// and every field after one, and for microsecond digits beyond the
// significant ones.
String buildText(bool interval, Uint32 first, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
    Uint32 seconds, Uint32 microseconds, Uint32 significant, Sint32 utcOffset)
{
    if (significant > 6)
        throw InvalidDateTimeFormatException();
    std::string text;
    bool wild = false;
    auto field = [&](Uint32 value, int width) {
        if (value == CIMDateTime::WILDCARD)
            wild = true;
        if (wild)
        {
            text.append(size_t(width), '*');
            return;
        }
        char buffer[16];
        snprintf(buffer, sizeof(buffer), "%0*u", width, value);
        if (std::string(buffer).size() != size_t(width))
            throw DateTimeOutOfRangeException(String("field value too large"));
        text += buffer;
    };
    if (interval)
        field(first, 8);
    else
    {
        field(first, 4);
        field(month, 2);
        field(day, 2);
    }
    field(hours, 2);
    field(minutes, 2);
    field(seconds, 2);
    text += '.';
    if (wild)
        text.append(6, '*');
    else
    {
        field(microseconds, 6);
        for (Uint32 i = significant; i < 6; i++)
            text[text.size() - 6 + i] = '*';
    }
    if (interval)
        text += ":000";
    else
    {
        if (utcOffset < -999 || utcOffset > 999)
            outOfRange("illegal utc offset");
        char buffer[16];
        snprintf(buffer, sizeof(buffer), "%c%03d", utcOffset < 0 ? '-' : '+',
            utcOffset < 0 ? -utcOffset : utcOffset);
        text += buffer;
    }
    return String(text.c_str());
}

}  // namespace

CIMDateTime::CIMDateTime() : _usec(0), _utcOffset(0), _interval(true), _numWildcards(0) {}

CIMDateTime::CIMDateTime(const CIMDateTime& x) = default;

CIMDateTime::CIMDateTime(const String& str) : CIMDateTime()
{
    set(str);
}

CIMDateTime::CIMDateTime(Uint64 usec, Boolean isInterval) : CIMDateTime()
{
    if (isInterval ? usec >= INTERVAL_LIMIT : usec >= TIME_STAMP_LIMIT)
        outOfRange(isInterval ? "interval too long" : "year beyond 9999");
    _usec = usec;
    _interval = isInterval;
}

CIMDateTime::CIMDateTime(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes, Uint32 seconds,
    Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
    : CIMDateTime()
{
    setTimeStamp(
        year, month, day, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits, utcOffset);
}

CIMDateTime::CIMDateTime(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
    Uint32 numSignificantMicrosecondDigits)
    : CIMDateTime()
{
    setInterval(days, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits);
}

CIMDateTime::~CIMDateTime() {}

CIMDateTime& CIMDateTime::operator=(const CIMDateTime& x) = default;

void CIMDateTime::setTimeStamp(Uint32 year, Uint32 month, Uint32 day, Uint32 hours, Uint32 minutes,
    Uint32 seconds, Uint32 microseconds, Uint32 numSignificantMicrosecondDigits, Sint32 utcOffset)
{
    set(buildText(false, year, month, day, hours, minutes, seconds, microseconds,
        numSignificantMicrosecondDigits, utcOffset));
}

void CIMDateTime::setInterval(Uint32 days, Uint32 hours, Uint32 minutes, Uint32 seconds, Uint32 microseconds,
    Uint32 numSignificantMicrosecondDigits)
{
    set(buildText(
        true, days, 0, 0, hours, minutes, seconds, microseconds, numSignificantMicrosecondDigits, 0));
}

void CIMDateTime::clear()
{
    _usec = 0;
    _utcOffset = 0;
    _interval = true;
    _numWildcards = 0;
}

void CIMDateTime::set(const String& str)
{
    clear();
    if (str.size() != 25)
        throw InvalidDateTimeFormatException();

    char text[26];
    for (Uint32 i = 0; i < 25; i++)
    {
        Uint16 c = str[i];
        if (c > 0x7F)
            throw InvalidDateTimeFormatException();
        text[i] = char(c);
    }
    text[25] = 0;

    if (text[14] != '.')
        throw InvalidDateTimeFormatException();
    char sign = text[21];
    if (sign != ':' && sign != '+' && sign != '-')
        throw InvalidDateTimeFormatException();
    bool interval = sign == ':';

    // Wildcards must run from some digit position to the last one, and may
    // only start at a field boundary (or anywhere in the microseconds).
    Uint32 firstWild = 20;
    for (Uint32 k = 0; k < 20; k++)
    {
        char c = text[DIGIT_POSITIONS[k]];
        if (c == '*')
        {
            if (firstWild == 20)
                firstWild = k;
        }
        else if (c < '0' || c > '9' || firstWild != 20)
            throw InvalidDateTimeFormatException();
    }
    if (firstWild < 14)
    {
        bool boundary = firstWild == 0 || firstWild == 8 || firstWild == 10 || firstWild == 12 ||
            (!interval && (firstWild == 4 || firstWild == 6));
        if (!boundary)
            throw InvalidDateTimeFormatException();
    }

    for (Uint32 i = 22; i < 25; i++)
        if (text[i] < '0' || text[i] > '9')
            throw InvalidDateTimeFormatException();
    Sint32 offset = Sint32(fieldValue(text, 22, 3));
    if (interval && offset != 0)
        throw InvalidDateTimeFormatException();

    // A field counts as wild when its first digit is a wildcard; wild fields
    // take their lowest value. Microseconds may be partly wild.
    auto wild = [&](Uint32 begin) { return text[begin] == '*'; };
    char digits[26];
    for (Uint32 i = 0; i < 26; i++)
        digits[i] = text[i] == '*' ? '0' : text[i];

    Fields f;
    f.yearOrDays = interval ? fieldValue(digits, 0, 8) : fieldValue(digits, 0, 4);
    f.month = interval ? 0 : (wild(4) ? 1 : fieldValue(digits, 4, 2));
    f.day = interval ? 0 : (wild(6) ? 1 : fieldValue(digits, 6, 2));
    f.hours = fieldValue(digits, 8, 2);
    f.minutes = fieldValue(digits, 10, 2);
    f.seconds = fieldValue(digits, 12, 2);
    f.microseconds = fieldValue(digits, 15, 6);

    if (!interval)
    {
        if (f.month < 1 || f.month > 12)
            outOfRange("illegal month number");
        // With the year wild, February may have 29 days.
        Uint32 year = wild(0) ? 2000 : f.yearOrDays;
        if (f.day < 1 || f.day > daysInMonth(year, f.month))
            outOfRange("illegal day number");
    }
    if (f.hours > 23)
        outOfRange("illegal hours number");
    if (f.minutes > 59)
        outOfRange("illegal minutes number");
    if (f.seconds > 59)
        outOfRange("illegal seconds number");

    _usec = toUsec(f, interval);
    _interval = interval;
    _utcOffset = sign == '-' ? -offset : offset;  // "-000" becomes +000
    _numWildcards = 20 - firstWild;
}

String CIMDateTime::toString() const
{
    char text[64];
    Uint64 days = _usec / USEC_PER_DAY;
    Uint64 rest = _usec % USEC_PER_DAY;
    unsigned hours = unsigned(rest / USEC_PER_HOUR);
    unsigned minutes = unsigned(rest % USEC_PER_HOUR / USEC_PER_MINUTE);
    unsigned seconds = unsigned(rest % USEC_PER_MINUTE / USEC_PER_SECOND);
    unsigned micro = unsigned(rest % USEC_PER_SECOND);
    if (_interval)
    {
        snprintf(text, sizeof(text), "%08llu%02u%02u%02u.%06u:000", days, hours, minutes, seconds, micro);
    }
    else
    {
        Uint32 year, month, day;
        civilFromDays(Sint64(days) + DAY_OF_YEAR_ZERO, year, month, day);
        Sint32 offset = _utcOffset < 0 ? -_utcOffset : _utcOffset;
        snprintf(text, sizeof(text), "%04u%02u%02u%02u%02u%02u.%06u%c%03d", year, month, day, hours, minutes,
            seconds, micro, _utcOffset < 0 ? '-' : '+', int(offset));
    }
    for (Uint32 k = 20 - _numWildcards; k < 20; k++)
        text[DIGIT_POSITIONS[k]] = '*';
    return String(text);
}

Boolean CIMDateTime::isInterval() const
{
    return _interval;
}

Boolean CIMDateTime::isInterval()
{
    return _interval;
}

Boolean CIMDateTime::isTimeStamp() const
{
    return !_interval;
}

CIMDateTime CIMDateTime::getCurrentDateTime()
{
    struct timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm local;
    localtime_r(&now.tv_sec, &local);
    Fields f;
    f.yearOrDays = Uint32(local.tm_year + 1900);
    f.month = Uint32(local.tm_mon + 1);
    f.day = Uint32(local.tm_mday);
    f.hours = Uint32(local.tm_hour);
    f.minutes = Uint32(local.tm_min);
    // A leap second is shown as the 59th.
    f.seconds = Uint32(local.tm_sec > 59 ? 59 : local.tm_sec);
    f.microseconds = Uint32(now.tv_nsec / 1000);
    CIMDateTime result;
    result._usec = toUsec(f, false);
    result._interval = false;
    result._utcOffset = Sint32(local.tm_gmtoff / 60);
    return result;
}

Sint64 CIMDateTime::_utcMicroSeconds() const
{
    return Sint64(_usec) - Sint64(_utcOffset) * Sint64(USEC_PER_MINUTE);
}

Sint64 CIMDateTime::getDifference(CIMDateTime startTime, CIMDateTime finishTime)
{
    if (startTime._interval != finishTime._interval)
        throw InvalidDateTimeFormatException();
    return finishTime._utcMicroSeconds() - startTime._utcMicroSeconds();
}

Boolean CIMDateTime::equal(const CIMDateTime& x) const
{
    return _interval == x._interval && _utcMicroSeconds() == x._utcMicroSeconds() &&
        _numWildcards == x._numWildcards;
}

Uint64 CIMDateTime::toMicroSeconds() const
{
    return Uint64(_utcMicroSeconds());
}

CIMDateTime CIMDateTime::operator+(const CIMDateTime& x) const
{
    if (!x._interval)
        throw TypeMismatchException();
    CIMDateTime result(*this);
    Uint64 limit = _interval ? INTERVAL_LIMIT : TIME_STAMP_LIMIT;
    if (x._usec >= limit || _usec >= limit - x._usec)
        outOfRange("result of addition");
    result._usec = _usec + x._usec;
    if (x._numWildcards > result._numWildcards)
        result._numWildcards = x._numWildcards;
    return result;
}

CIMDateTime& CIMDateTime::operator+=(const CIMDateTime& x)
{
    return *this = *this + x;
}

CIMDateTime CIMDateTime::operator-(const CIMDateTime& x) const
{
    if (_interval && !x._interval)
        throw TypeMismatchException();
    CIMDateTime result;
    if (!_interval && !x._interval)
    {
        Sint64 difference = _utcMicroSeconds() - x._utcMicroSeconds();
        if (difference < 0)
            outOfRange("negative interval");
        result._usec = Uint64(difference);
    }
    else
    {
        if (x._usec > _usec)
            outOfRange("result of subtraction");
        result = *this;
        result._usec = _usec - x._usec;
    }
    result._numWildcards = _numWildcards > x._numWildcards ? _numWildcards : x._numWildcards;
    return result;
}

CIMDateTime& CIMDateTime::operator-=(const CIMDateTime& x)
{
    return *this = *this - x;
}

CIMDateTime CIMDateTime::operator*(Uint64 num) const
{
    if (!_interval)
        throw TypeMismatchException();
    if (num != 0 && _usec > (INTERVAL_LIMIT - 1) / num)
        outOfRange("result of multiplication");
    CIMDateTime result(*this);
    result._usec = _usec * num;
    return result;
}

CIMDateTime& CIMDateTime::operator*=(Uint64 num)
{
    return *this = *this * num;
}

CIMDateTime CIMDateTime::operator/(Uint64 num) const
{
    if (!_interval)
        throw TypeMismatchException();
    if (num == 0)
        throw Exception(String("CIMDateTime: division by zero"));
    CIMDateTime result(*this);
    result._usec = _usec / num;
    return result;
}

CIMDateTime& CIMDateTime::operator/=(Uint64 num)
{
    return *this = *this / num;
}

Uint64 CIMDateTime::operator/(const CIMDateTime& cimDateTime) const
{
    if (!_interval || !cimDateTime._interval)
        throw TypeMismatchException();
    if (cimDateTime._usec == 0)
        throw Exception(String("CIMDateTime: division by zero"));
    return _usec / cimDateTime._usec;
}

namespace
{

void requireSameKind(bool a, bool b)
{
    if (a != b)
        throw TypeMismatchException();
}

}  // namespace

Boolean CIMDateTime::operator<(const CIMDateTime& x) const
{
    requireSameKind(_interval, x._interval);
    return _utcMicroSeconds() < x._utcMicroSeconds();
}

Boolean CIMDateTime::operator<=(const CIMDateTime& x) const
{
    requireSameKind(_interval, x._interval);
    return _utcMicroSeconds() <= x._utcMicroSeconds();
}

Boolean CIMDateTime::operator>(const CIMDateTime& x) const
{
    requireSameKind(_interval, x._interval);
    return _utcMicroSeconds() > x._utcMicroSeconds();
}

Boolean CIMDateTime::operator>=(const CIMDateTime& x) const
{
    requireSameKind(_interval, x._interval);
    return _utcMicroSeconds() >= x._utcMicroSeconds();
}

Boolean CIMDateTime::operator!=(const CIMDateTime& x) const
{
    return !equal(x);
}

Boolean operator==(const CIMDateTime& x, const CIMDateTime& y)
{
    return x.equal(y);
}

PEGASUS_NAMESPACE_END
