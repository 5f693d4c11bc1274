/*
 * zdasim_control.h - controls of the array simulator behind libzdaapi.
 *
 * For tests and for the server: reset the array, describe users and
 * rights, make calls fail, read the ledgers (allocations, semaphore), the
 * journal of calls, the event log and the captured log lines, and drive
 * the clock. Every function is thread-safe. Strings returned through
 * caller buffers are cut to the buffer and always terminated.
 */
#ifndef ZDASIM_CONTROL_H
#define ZDASIM_CONTROL_H

#include <stddef.h>
#include <stdint.h>
#include <time.h>

#include "zdaapi.h"

#ifdef __cplusplus
extern "C"
{
#endif

    /* ---- the array ------------------------------------------------------------ */

    /* Empties the array: no users, CPGs, volumes, sets or remote copy. The
 * system identity keeps its defaults. Ledgers, journal, faults and the
 * clock are left alone (see zdasim_clear_records). */
    void zdasim_reset_empty(void);

    /* Loads the built-in small test array (see array/src/test_array.cpp for
 * what it holds: users admin/operator/viewer/noaccess, 3 CPGs in 2 domains,
 * a few base volumes, copies and vvsets). */
    void zdasim_reset_test_array(void);

    /* Clears ledgers, journal, event log, captured log lines and faults. Does
 * not touch allocations still outstanding (they stay counted). */
    void zdasim_clear_records(void);

    /* ---- users and rights ------------------------------------------------------ */

    /* Adds or replaces a role; `defaultAnswer` answers keys the role has no
 * entry for (API_AUTH_*). */
    void zdasim_role_set(const char* role, int defaultAnswer);
    /* Sets the answer of `role` for the exact key (trailing blanks count). */
    void zdasim_role_set_right(const char* role, const char* key, int answer);
    /* Adds or replaces a user with a role. 0, or API_E_NOT_FOUND for an
 * unknown role. */
    int zdasim_user_set(const char* user, const char* role);
    /* Makes api_zdaOpenForCimserver refuse (1) or accept (0) the user. */
    int zdasim_user_refuse_open(const char* user, int refuse);
    /* Whether `user` may use the simulator controls: 1 when the array opens for
 * the user and the user's role allows the rights key
 * "zda_storagesetting.modifyinstance" (changing the system's settings),
 * else 0. Takes no injected fault and is not journaled, so that faults
 * injected through the controls cannot lock out the controls. */
    int zdasim_user_may_control(const char* user);

    /* ---- system ----------------------------------------------------------------- */

    void zdasim_system_set_policy(uint32_t policyFlags);
    void zdasim_system_set_nodes_alive(int nodes);
    /* Sets the IPv4 and IPv6 management addresses ("" for none). 0 or
 * API_E_INVALID. */
    int zdasim_system_set_addresses(const char* ipv4, const char* ipv6);
    /* Sets the volume limits that api_getMaxVolumeNumbers reports (maxVol also
 * bounds how many volumes the array holds). */
    void zdasim_system_set_volume_limits(
        uint32_t maxVol, uint32_t maxBaseVol, uint32_t maxSnapshotsPerBase, uint32_t maxRWSnapshots);
    /* Sets the remote copy limit `vartype` (api_mvar_t) that api_getmvar
 * reports. 0, or API_E_INVALID for an unknown vartype. */
    int zdasim_system_set_rcopy_limit(int vartype, uint32_t value);

    /* ---- volumes -------------------------------------------------------------------- */

    /* Makes the volume busy for its next `removals` removal attempts (-1: until
 * told otherwise, 0: not busy). 0 or API_E_NOT_FOUND. */
    int zdasim_volume_set_busy(const char* name, int removals);

    /* Adds a base volume (for tests that need many volumes): `usrCpg` and
 * `snapCpg` must exist ("" for no snapshot space). 0 or an API_E_* code. */
    int zdasim_volume_add(
        const char* name, const char* usrCpg, const char* snapCpg, unsigned long long sizeMiB);

    /* Sets a key-value of a vvset. 0 or API_E_NOT_FOUND. */
    int zdasim_vvset_set_key(const char* set, const char* key, const char* value);

    /* ---- fault injection ------------------------------------------------------------- */

    /* The next `count` calls of `function` (the call's name, e.g. "api_getVVSets")
 * fail with `code` and `text`, without doing anything. Status calls return
 * them as the status, int calls return `code`. count -1: until cleared. */
    void zdasim_fault_add(const char* function, int count, int code, const char* text);
/* A fault with this code makes the call do its work and then throw (with
 * `text`), as an unexpected error inside the library would: the call
 * still answers with API_E_INTERNAL and a text, and a change it made is
 * undone when a state file is open. */
#define ZDASIM_FAULT_THROW (-999)
    /* The next `count` cim_sem_wait calls time out at once. */
    void zdasim_fault_sem_timeouts(int count);
    void zdasim_faults_clear(void);

    /* ---- the semaphore ------------------------------------------------------------------ */

    /* Time a cim_sem_wait waits before it times out (default 30000 ms, or
 * ZDA_SEM_TIMEOUT_MS in the environment). */
    void zdasim_sem_set_timeout_ms(long ms);

    typedef struct zdasim_sem_ledger
    {
        int held;             /* 1 while some thread holds the semaphore */
        int heldByCaller;     /* 1 when the calling thread holds it */
        long waits;           /* cim_sem_wait calls */
        long acquired;        /* waits that returned 0 */
        long timeouts;        /* waits that timed out */
        long posts;           /* balanced posts */
        long unbalancedPosts; /* posts without a held semaphore or by another thread */
        long selfWaits;       /* waits by the thread that already held it */
        long unguardedCalls;  /* calls that need the semaphore made without holding it */
    } zdasim_sem_ledger_t;

    void zdasim_sem_ledger(zdasim_sem_ledger_t* out);

    /* ---- allocation ledger ------------------------------------------------------------- */

    /* Outstanding allocations of one kind (NULL: all kinds). Kinds: "vv_list",
 * "sets", "vv_filter", "okv", "kv_query", "cpg_list", "port_list" and the
 * remote copy and task kinds. */
    long zdasim_ledger_outstanding(const char* kind);
    /* Releases of pointers the library did not hand out, or handed to the
 * wrong release call (double releases included). */
    long zdasim_ledger_bad_releases(void);
    /* "kind=n kind=n ..." for every kind with outstanding allocations. */
    void zdasim_ledger_report(char* buffer, size_t size);

    /* ---- journal of calls -------------------------------------------------------------- */

    /* Each call of the library is journaled with its key arguments and result:
 * "api_getVVSets name=set1 -> 0". */
    size_t zdasim_journal_count(void);
    /* Copies entry i; returns 0, or -1 when there is no entry i. */
    int zdasim_journal_entry(size_t i, char* buffer, size_t size);
    /* Number of journaled calls of `function`. */
    size_t zdasim_journal_count_of(const char* function);
    void zdasim_journal_clear(void);

    /* ---- event log -------------------------------------------------------------------- */

    /* The audit records the array received, oldest first (at most 10000 kept). */
    size_t zdasim_event_count(void);
    /* Copies event i; `call` gets the call's name. 0 or -1. */
    int zdasim_event_get(size_t i, api_evtparam_t* event, char* call, size_t callSize, int* result);

    /* ---- log ---------------------------------------------------------------------------- */

    /* Lines at or below `level` are written (default 3, or ZDA_LOG_LEVEL). */
    void zdasim_log_set_threshold(int level);
    /* Writes the log to `path` (appended), or to stderr with NULL. 0 or -1. */
    int zdasim_log_to_file(const char* path);
    /* Keeps every log_message line (all levels, whatever the threshold) for
 * tests (on 1) or stops (0). */
    void zdasim_log_capture(int on);
    size_t zdasim_log_count(void);
    /* Copies captured line i (without its newline); *level gets its level. */
    int zdasim_log_line(size_t i, int* level, char* buffer, size_t size);
    void zdasim_log_clear(void);

    /* ---- clock ------------------------------------------------------------------------------ */

    /* The array's time: the real time by default; stepped time from `start`
 * after zdasim_clock_set, moved only by zdasim_clock_advance. */
    void zdasim_clock_set(time_t start);
    void zdasim_clock_advance(long seconds);
    void zdasim_clock_use_real(void);
    time_t zdasim_clock_now(void);

    /* ---- descriptions, the demo array, the state file -------------------------------- */

    /* Replaces the array with the demo array compiled into the library, the
 * array a new process starts with (docs/demo-array.md). */
    void zdasim_reset_demo_array(void);

    /* Replaces the array with the array description in the file `path`
 * (docs/array-description.md). Returns 0, or -1 with the reason in `error`
 * ("<file>: <field>: <what is wrong>"); a description that does not load
 * leaves the array as it was. Ledgers, journal, faults and the clock are
 * left alone; relative times in the description count from the clock. */
    int zdasim_load_description_file(const char* path, char* error, size_t size);
    /* The same for a description held in `text`; `origin` names it in errors. */
    int zdasim_load_description_text(const char* text, const char* origin, char* error, size_t size);
    /* Writes the array as a description to `path` (atomically). 0, or -1 with
 * the reason in `error`. */
    int zdasim_save_description_file(const char* path, char* error, size_t size);

    /* Keeps the array in the state file `path` and its journal `<path>.journal`:
 * when the file exists the array is loaded from it and the journal's changes
 * (as zdasim_load_description_file; on failure nothing changes and no file
 * is kept), otherwise the present array is written to it. From then on every
 * call that changes the array appends its change to the journal and flushes
 * it before returning; a control that replaces the array rewrites the file
 * atomically (write, flush, rename). 0, or -1 with the reason in `error`. */
    int zdasim_state_file_open(const char* path, char* error, size_t size);
    /* Folds the journal into the file and stops keeping the array there. */
    void zdasim_state_file_close(void);

    /* ---- remote copy and tasks ---------------------------------------------------------- */

    /* Sets the status (RM_TARGET_*) of a remote copy target, as a failing or
 * repaired link would. A group started on a target that is not ready
 * stops there at the next call, its synchronisation failing. 0 or
 * API_E_NOT_FOUND. */
    int zdasim_rcopy_target_set_status(const char* target, int status);

    /* Starts a physical copy: a new volume `clone` copied from `source`, the
 * copy running as a task for `seconds` of the array's clock. With
 * failAtPercent 0..99 the copy fails on reaching that share (-1: never).
 * *tid (when not NULL) gets the task id. 0 or an API_E_* code. */
    int zdasim_clone_start(
        const char* source, const char* clone, long seconds, int failAtPercent, uint32_t* tid);

    /* Makes an active task fail, with `text`, at the next step of the clock.
 * 0, or API_E_NOT_FOUND when no such task is active. */
    int zdasim_task_fail(uint32_t tid, const char* text);

#ifdef __cplusplus
}
#endif

#endif /* ZDASIM_CONTROL_H */
