/*
 * zdaapi_settings.h - the array management library: storage settings,
 * named templates for the copies the array makes (where their space goes,
 * how long snapshots live, the redundancy asked for). They are kept with
 * the array and have no effect until a caller applies one.
 */
#ifndef ZDAAPI_SETTINGS_H
#define ZDAAPI_SETTINGS_H

#include "zdaapi_base.h"

#ifdef __cplusplus
extern "C"
{
#endif

/* At most this many settings are kept. */
#define API_MAX_SETTINGS 1024

/* Bits of api_setting_t.timesAt: the expiration (retention) is a point in
 * time, in seconds since the epoch, and not an interval. */
#define API_SETTING_EXPIRATION_AT 0x1u
#define API_SETTING_RETENTION_AT 0x2u

    typedef struct api_setting
    {
        char name[API_NAME_LEN];        /* unique, 1..31 characters */
        char comment[257];              /* "" for none */
        uint32_t baseId;                /* id the first snapshot made with it gets, 0 the array chooses */
        uint32_t expirationSeconds;     /* a snapshot's life (or the time it ends), 0 unlimited */
        uint32_t retentionSeconds;      /* a snapshot's protected time (or its end), 0 none */
        char userCpg[API_NAME_LEN];     /* CPG of a copy's user space, "" the source's */
        char snapCpg[API_NAME_LEN];     /* CPG of a copy's snapshot space, "" the source's */
        uint16_t dataRedundancyGoal;    /* 0 not stated */
        uint16_t packageRedundancyGoal; /* 0 not stated */
        uint8_t deltaReservationGoal;   /* percent, 0 not stated */
        uint8_t noSinglePointOfFailure; /* 1 asked for */
        uint8_t timesAt;                /* API_SETTING_*_AT: which times are points in time */
    } api_setting_t;

    /* Lists the settings in name order. 0 with *count records in *settings
 * (NULL when none), released with free_if_not_null. Int form. */
    int api_getSettings(int* count, api_setting_t** settings);

    /* Adds a setting. Fails with API_E_EXISTS (name taken), API_E_INVALID (an
 * empty or unterminated name, a CPG that does not exist, a retention
 * longer than the expiration when both are intervals or both points in
 * time, a delta reservation above 100) or API_E_LIMIT.
 * Status form. */
    api_Status_t api_createSetting(_api_evtparam_t* event, const api_setting_t* setting);

    /* Replaces the setting of the same name with `setting`. Fails with
 * API_E_NOT_FOUND (no such setting), or as api_createSetting. Status form. */
    api_Status_t api_modifySetting(_api_evtparam_t* event, const api_setting_t* setting);

    /* Removes the setting `name`. API_E_NOT_FOUND when there is none. Status form. */
    api_Status_t api_removeSetting(_api_evtparam_t* event, const char* name);

#ifdef __cplusplus
}
#endif

#endif /* ZDAAPI_SETTINGS_H */
