/*
 * zdaapi_base.h - the array management library: shared records and the
 * process-wide services every caller uses (result status, audit event
 * record, the array semaphore, logging, small helpers).
 *
 * Plain C declarations, usable from C and C++. Every call is thread-safe:
 * any number of threads may call the library at once.
 *
 * Ownership: anything the library hands out (lists, records, option sets,
 * filters) is allocated per call and belongs to the caller until it is
 * given back to its release call (api_free*, api_getvv_filter_free) or to
 * free_if_not_null. Releases never take the array semaphore.
 */
#ifndef ZDAAPI_BASE_H
#define ZDAAPI_BASE_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C"
{
#endif

    /* 64-bit quantities are unsigned long long so that they take the same type
 * as the 64-bit integers of the provider SDK without a cast. */
    typedef unsigned long long api_u64_t;

    /* A disk (volume) number. */
    typedef uint32_t dskid_t;

/* Size of every name field of the array: 31 characters and a terminator. */
#define API_NAME_LEN 32
/* Size of an error text, including the terminator. */
#define API_ERRTEXT_LEN 512
/* Size of a WWN text, including the terminator (see api_wwnIntToString). */
#define API_WWN_TEXT_LEN 33

/* ---- result codes ---------------------------------------------------- */
/* Codes that callers compare. Any other non-zero code is a plain failure. */
#define API_OK 0
#define API_E_SEM_TIMEOUT 29      /* the array semaphore was not obtained */
#define API_E_IN_USE 68           /* the object is in use by another object */
#define API_E_BUSY 70             /* api_removeVVs: a volume is busy, retry later */
#define API_E_REFUSED 78          /* a refusal stored by the caller's own checks */
#define API_E_PARTIAL_RETURN 89   /* some volumes of a return were not deleted */
#define API_E_PARTIAL_REMOVE 1119 /* api_removeVVs: some volumes were not removed */
/* Codes of this library's own failures (the values are this library's). */
#define API_E_NOT_FOUND 2 /* the named object does not exist */
#define API_E_NOMEM 12    /* out of memory */
#define API_E_ACCESS 13   /* the user may not do this */
#define API_E_EXISTS 17   /* an object of that name already exists */
#define API_E_INVALID 22  /* a bad argument; the text says which */
#define API_E_LIMIT 28    /* an array limit would be exceeded */
#define API_E_INTERNAL                                                                                       \
    5 /* the library could not finish the call (the text says
                                  * why); the array is as it was before the call */

    /* ---- api_Status_t ---------------------------------------------------- */
    /* The result of most calls, returned by value. Only `code` is meant to be
 * read directly (0 success); the text is read with api_getErrorTextNoNL. */
    typedef struct api_Status
    {
        int code;
        char text[API_ERRTEXT_LEN];
    } api_Status_t;

    /* Sets the record to success with an empty text. */
    void api_initStatus(api_Status_t* status);

    /* Stores a failure: afterwards status->code is `code` and the text is a
 * copy of `text` (cut to API_ERRTEXT_LEN - 1 bytes; NULL counts as ""). */
    void errinfo_set_str(api_Status_t* status, int code, const char* text);

    /* Copies the status text into buffer (at most size - 1 bytes and a
 * terminator) with any trailing newlines removed. A failed record without
 * a text of its own (a caller wrote `code` directly) reads
 * "Array error <code>". Returns buffer. Takes no semaphore. */
    char* api_getErrorTextNoNL(char* buffer, int size, const api_Status_t* status);

    /* ---- audit event record ---------------------------------------------- */
    /* Passed to every call that changes the array; the array keeps a copy of
 * each in its event log. Text fields are NUL-terminated. */
    typedef struct _api_evtparam
    {
        int cb_code;          /* control block code, left to the caller */
        char user[32];        /* user name */
        char addr[46];        /* client IP address */
        char method[128];     /* "<class>:<method>" */
        char inst_op[16];     /* operation text */
        char inst_param[256]; /* free text */
    } _api_evtparam_t;
    typedef _api_evtparam_t api_evtparam_t;

    /* ---- names ----------------------------------------------------------- */
    /* One fixed-size name: up to 31 characters and a terminator. Arrays of it
 * are plain malloc'ed memory owned by whoever allocated them. */
    typedef struct api_name
    {
        char name[API_NAME_LEN];
    } api_name_t;

/* ---- array semaphore ------------------------------------------------- */
/* The one process-wide lock around array calls. cim_sem_wait returns 0
 * when the caller now holds it, or CIM_SEM_TIMEDOUT after the configured
 * time-out (the semaphore is then not held and must not be posted). It is
 * not reentrant: a thread that waits while holding it waits for itself
 * and times out. cim_sem_post releases it; a post without a matching wait
 * is ignored and counted by the simulator's ledger. */
#define CIM_SEM_TIMEDOUT API_E_SEM_TIMEOUT
    int cim_sem_wait(void);
    void cim_sem_post(void);

/* ---- logging ----------------------------------------------------------- */
/* Log levels: errors, warnings, trace. */
#define LOG_LEVEL_ERROR 2
#define LOG_LEVEL_WARNING 3
#define LOG_LEVEL_TRACE 4

    /* Writes one formatted line to the log (stderr or a file, set through the
 * simulator controls or ZDA_LOG_FILE / ZDA_LOG_LEVEL in the environment)
 * when `level` is at or below the threshold (default 3). A trailing newline
 * is added when the text has none. */
    void log_message(int level, const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;

    /* Prints a line to the log without an audit event. */
    void zda_print_no_evt(const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 1, 2)))
#endif
        ;

    /* Prints a line and stops the process (abort); never returns. */
    void zda_panic(const char* format, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 1, 2), noreturn))
#endif
        ;

    /* ---- helpers ----------------------------------------------------------- */
    /* Frees p when it is not NULL. Lists the library handed out are returned to
 * it this way; other malloc'ed memory may be freed this way too. */
    void free_if_not_null(void* p);

    /* Checks an IP address text. Returns 10 (AF_INET6) for an IPv6 address and
 * 2 (AF_INET) for an IPv4 address, writing its normal form into buffer
 * (size bytes, at least 46 for IPv6); returns -1 for anything else. */
    int validateConvertIP(const char* addressText, char* buffer, int size);

    /* The number of controller nodes that are up. */
    int cluster_num_nodes_alive(void);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_BASE_H */
