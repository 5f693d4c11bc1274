/*
 * zdaapi.h - the array management library, all of it.
 *
 * Calls marked "status form" return an api_Status_t and are meant to be
 * made between cim_sem_wait() and cim_sem_post(); calls marked "int form"
 * return an int (0 success) and are made the same way. Releases and pure
 * helpers take no semaphore.
 */
#ifndef ZDAAPI_H
#define ZDAAPI_H

#include "zdaapi_base.h"
#include "zdaapi_system.h"
#include "zdaapi_volumes.h"
#include "zdaapi_sets.h"
#include "zdaapi_rcopy.h"
#include "zdaapi_tasks.h"
#include "zdaapi_copies.h"
#include "zdaapi_settings.h"

#endif /* ZDAAPI_H */
