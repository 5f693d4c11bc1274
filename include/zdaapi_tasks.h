/*
 * zdaapi_tasks.h - the array management library: background tasks
 * (physical copies, remote copy synchronisation) and their progress.
 */
#ifndef ZDAAPI_TASKS_H
#define ZDAAPI_TASKS_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

/* Task types. */
#define API_TASK_PHYSICAL_COPY 1
#define API_TASK_RCOPY_SYNC 2
#define API_TASK_COPY_RESTORE 3 /* a copy written back to its parent */

/* Task states. */
#define API_TASK_ACTIVE 1
#define API_TASK_DONE 2
#define API_TASK_FAILED 3
#define API_TASK_CANCELLED 4

    typedef struct api_task
    {
        uint32_t tid;
        int type;                /* API_TASK_* type */
        int state;               /* API_TASK_* state */
        uint8_t percentDone;     /* 0..100 */
        char name[64];           /* the object the task works on */
        char user[API_NAME_LEN]; /* who started it */
        time_t startTime;        /* seconds since the epoch */
        time_t endTime;          /* 0 while active */
        char detail[256];        /* failure text, or "" */
        time_t asOf;             /* the array's time when the list was read:
                                      what an active task's elapsed time runs to */
    } api_task_t;

    /* Lists the tasks the array remembers, oldest first. 0 with *count records
 * in *tasks (NULL when none), released with free_if_not_null. Int form of
 * the array semaphore. */
    int api_getTasks(int* count, api_task_t** tasks);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_TASKS_H */
