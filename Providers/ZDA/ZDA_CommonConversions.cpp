// Conversions between the array's values and CIM values: times, instance
// identifiers, generated names, remote copy target names and limits.
#include "ZDA_Common.h"

#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// A field of `width` digits at `index` of a date-time text.
int fieldAt(const char* text, size_t index, size_t width)
{
    char digits[8] = "";
    std::memcpy(digits, text + index, width);
    digits[width] = '\0';
    return std::atoi(digits);
}

const char RANDOM_ALPHABET[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

std::mutex g_randMutex;
bool rand_seeded = false;
struct random_data random_states;
char g_rand_buf[256];

}  // namespace

CIMDateTime ZDA_Common::getCIMDateTime(time_t time)
{
    tm local;
    localtime_r(&time, &local);
    const int utc_offset = static_cast<int>(local.tm_gmtoff / 60);
    char text[79];
    std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d.%06d+%03d", local.tm_year + 1900,
        local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec, 0, std::abs(utc_offset));
    if (utc_offset < 0)
        text[21] = '-';
    CIMDateTime result;
    result.clear();
    result.set(String(text));
    return result;
}

time_t ZDA_Common::getDateTime(const CIMDateTime& cimTime)
{
    tm fields;
    std::memset(&fields, 0, sizeof fields);
    const String text = cimTime.toString();
    if (_formatDateTime((const char*)text.getCString(), &fields) <= 0)
        return 0;
    time_t result = mktime(&fields);
    if (result == (time_t)-1)
        throw DateTimeOutOfRangeException(text);
    return result;
}

int ZDA_Common::_formatDateTime(const char* timeString, tm* tmval)
{
    // A CIM date-time is 25 characters: yyyymmddhhmmss.mmmmmmsutc.
    char text[26];
    std::memset(text, 0, sizeof text);
    std::strncpy(text, timeString, 25);
    tmval->tm_sec = tmval->tm_min = tmval->tm_hour = 0;
    tmval->tm_mday = tmval->tm_mon = tmval->tm_year = 0;
    tmval->tm_wday = tmval->tm_yday = 0;

    const int year = fieldAt(text, 0, 4);
    if (year == 0)
        return 0;  // an interval or an unset date
    if (year < 1900)
        return -1;
    tmval->tm_year = year - 1900;
    tmval->tm_mon = fieldAt(text, 4, 2) - 1;
    if (tmval->tm_mon < 0)
        return -1;
    tmval->tm_mday = fieldAt(text, 6, 2);
    tmval->tm_hour = fieldAt(text, 8, 2);
    tmval->tm_min = fieldAt(text, 10, 2);
    tmval->tm_sec = fieldAt(text, 12, 2);
    tmval->tm_isdst = -1;  // mktime decides whether summer time applies
    return 1;
}

String ZDA_Common::getTimeZone()
{
    time_t now = time(nullptr);
    tm local;
    localtime_r(&now, &local);
    // The offset in minutes, as the text has always carried it.
    const long minutes = std::labs(local.tm_gmtoff) / 60;
    char text[32];
    std::snprintf(text, sizeof text, local.tm_gmtoff > 0 ? "GMT+%ld" : "GMT-%ld", minutes);
    return String(text);
}

String ZDA_Common::extractFromInstanceID(const String& instanceID)
{
    const String prefix = String("KX_ORLA") + ":";
    const Uint32 pos = instanceID.find(prefix);
    if (pos == PEG_NOT_FOUND)
        return String();
    return instanceID.subString(pos + prefix.size());
}

void ZDA_Common::generate_random_string(char* str, unsigned int len)
{
    if (!(len > 0 && str != NULL))
    {
        zda_print_no_evt("Assertion failed: %s\n", "len > 0 && str != NULL");
        zda_panic("Assertion point: file: %s, line: %d\n", __FILE__, __LINE__);
    }
    std::lock_guard<std::mutex> lock(g_randMutex);
    if (!rand_seeded)
    {
        std::memset(&random_states, 0, sizeof random_states);
        initstate_r(static_cast<unsigned int>(time(NULL)), g_rand_buf, sizeof g_rand_buf, &random_states);
        rand_seeded = true;
    }
    const size_t alphabetSize = sizeof RANDOM_ALPHABET - 1;
    for (unsigned int i = 0; i + 1 < len; i++)
    {
        int32_t r = 0;
        random_r(&random_states, &r);
        str[i] = RANDOM_ALPHABET[static_cast<size_t>(r) % alphabetSize];
    }
    str[len - 1] = '\0';
}

String ZDA_Common::RCTargetToSysname(const api_rcopy_t& rcopy, const String& targetName)
{
    for (int i = 0; i < rcopy.target_count; i++)
    {
        if (String::equal(String(rcopy.targets[i].rm_hdr.rm_name), targetName))
            return String(rcopy.targets[i].rm_remote_sysname);
    }
    return String();
}

Uint32 ZDA_Common::getInstanceThreshold(Uint32 th_scale)
{
    struct rlimit64 limit;
    std::memset(&limit, 0, sizeof limit);
    getrlimit64(RLIMIT_AS, &limit);
    const Uint32 soft = static_cast<Uint32>(limit.rlim_cur / 1000000);
    log_message(4, "soft limit = %u, maxInstScale factor = %u\n", soft, th_scale);
    return soft * th_scale;
}

int ZDA_Common::getNodePairIndex(int nodePosition)
{
    if (nodePosition < 0 || nodePosition > 7)
        return -1;
    return nodePosition / 2;
}

int ZDA_Common::getPortLPID(Uint64 portWWN)
{
    return api_getFCPortLPID(portWWN);
}

int ZDA_Common::getPortLPID(String& iscsiName)
{
    char name[224];
    std::memset(name, 0, sizeof name);
    std::strncpy(name, (const char*)iscsiName.getCString(), sizeof name - 1);
    return api_getiSCSIPortLPID(name);
}

PEGASUS_NAMESPACE_END
