// Base types, namespace and linkage macros of the provider SDK.
//
// Provider sources are compiled with -DPEGASUS_PLATFORM_LINUX_X86_64_GNU. The
// SDK only supports that platform's type model (LP64, GCC or Clang), so a
// build that forgets the define gets the same definitions instead of an error.
#ifndef Pegasus_Config_h
#define Pegasus_Config_h

#if !defined(PEGASUS_PLATFORM_LINUX_X86_64_GNU)
#if defined(__x86_64__) || defined(__aarch64__) || defined(__LP64__)
#define PEGASUS_PLATFORM_LINUX_X86_64_GNU
#else
#error "<Pegasus/Common/Config.h>: Unsupported Platform"
#endif
#endif

#include <cstddef>

#define PEGASUS_NAMESPACE_BEGIN                                                                              \
    namespace Pegasus                                                                                        \
    {
#define PEGASUS_NAMESPACE_END }
#define PEGASUS_NAMESPACE(X) Pegasus::X
#define PEGASUS_USING_PEGASUS using namespace Pegasus
#define PEGASUS_USING_STD using namespace std
#define PEGASUS_STD(X) std::X

#if defined(__GNUC__) && __GNUC__ >= 4
#define PEGASUS_EXPORT __attribute__((visibility("default")))
#define PEGASUS_IMPORT __attribute__((visibility("default")))
#define PEGASUS_HIDDEN_LINKAGE __attribute__((visibility("hidden")))
#else
#define PEGASUS_EXPORT
#define PEGASUS_IMPORT
#define PEGASUS_HIDDEN_LINKAGE
#endif

#define PEGASUS_UINT64 unsigned long long
#define PEGASUS_SINT64 long long
#define PEGASUS_SINT64_LITERAL(X) Sint64(X##LL)
#define PEGASUS_UINT64_LITERAL(X) Uint64(X##ULL)
#define PEGASUS_64BIT_CONVERSION_WIDTH "ll"

// Index/size value meaning "none" or "to the end".
#define PEG_NOT_FOUND Uint32(-1)

PEGASUS_NAMESPACE_BEGIN

typedef bool Boolean;
typedef unsigned char Uint8;
typedef signed char Sint8;
typedef unsigned short Uint16;
typedef signed short Sint16;
typedef unsigned int Uint32;
typedef signed int Sint32;
typedef PEGASUS_UINT64 Uint64;
typedef PEGASUS_SINT64 Sint64;
typedef float Real32;
typedef double Real64;

PEGASUS_NAMESPACE_END

#endif
