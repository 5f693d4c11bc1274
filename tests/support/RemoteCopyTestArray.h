// An array description for the tests of the remote replication model: one
// remote copy target per connectivity state and per kind of remote WWN, and
// one remote copy group per shape the model tells apart. The system, users
// and CPGs are those of the simulator's small test array, so fixtures built
// for it keep working after the load.
//
//   targets  tReady, tSyncOnly (flag 0x1), tAsyncOnly (flag 0x80): ready,
//              all to peer1 (system 11) with the node WWN 2FF70002AC00000B
//            tNew (0), tRelease (2), tFailing (3), tFailed (4),
//              tDisabled (153), tOdd (7): peer2 .. peer7, each its own WWN
//            tUnusable: ready but flagged 0x800000 (peer8)
//            tComputed: ready, only a computed WWN 2FF70002AC000012 (peer9),
//              synchronous mode only (flag 0x1)
//            tUnknown: ready, no WWN at all (peer10)
//   groups   gSync      dom1, sync to tSyncOnly, started, rv1 synced
//            gByModeSync  secondary by nature, sync to tReady with option
//                       0x400000 (the local side is the source by mode)
//            gByModePeriodic  primary by nature, periodic to tReady with
//                       option 0x400000 (the local side is not the source)
//            gNoDomain  no domain, to tReady, rv3 synced
//            gNew       never started: to tReady, rv4 new
//            gEmpty     to tReady, no volumes
//            gTwo       dom2, to tReady and tComputed, rv5 synced on both,
//                       rv6 synced on tReady and without a map for tComputed
//            gUnknown   dom2, to tUnknown, rv7 synced
//
// remoteCopyStateTestArray() adds, on the same targets, one group per way a
// volume's remote copy state shows (groups "cs..." with one volume "cv..."
// each, see copyStateGroups below), a group gLong of nine volumes, and
// snapshot vvsets of remote copy groups: gTwo_part (one snapshot of gTwo's
// two volumes) and gLong_snaps (nine snapshots whose names join past 255
// characters).
#ifndef ZDA_TESTS_REMOTE_COPY_TEST_ARRAY_H
#define ZDA_TESTS_REMOTE_COPY_TEST_ARRAY_H

#include <string>

namespace zda_test
{

inline const char* remoteCopyTestArray()
{
    return R"({
  "system": {"name": "zda-sim", "id": 1300001, "hostName": "zda-sim.local",
             "ipv4": "192.0.2.10", "nodesTotal": 2},
  "roles": [{"name": "super", "default": "allowed"}, {"name": "edit", "default": "allowed"},
            {"name": "browse", "default": "denied"}],
  "users": [{"name": "admin", "role": "super"}, {"name": "operator", "role": "edit"},
            {"name": "viewer", "role": "browse"},
            {"name": "noaccess", "role": "browse", "refuseOpen": true}],
  "cpgs": [{"name": "FC_r5", "domain": "dom1"}, {"name": "NL_r6", "domain": "dom2"}],
  "volumes": [
    {"name": "rv1", "usrCpg": "FC_r5", "sizeMiB": 1024},
    {"name": "rv2", "usrCpg": "FC_r5", "sizeMiB": 1024},
    {"name": "rv3", "usrCpg": "FC_r5", "sizeMiB": 1024},
    {"name": "rv4", "usrCpg": "FC_r5", "sizeMiB": 1024},
    {"name": "rv5", "usrCpg": "NL_r6", "sizeMiB": 2048},
    {"name": "rv6", "usrCpg": "NL_r6", "sizeMiB": 2048},
    {"name": "rv7", "usrCpg": "NL_r6", "sizeMiB": 2048}
  ],
  "remoteCopy": {
    "mode": "on",
    "targets": [
      {"name": "tReady", "remoteSystemId": 11, "remoteSystemName": "peer1", "nodeWwn": "2FF70002AC00000B"},
      {"name": "tSyncOnly", "remoteSystemId": 11, "remoteSystemName": "peer1", "nodeWwn": "2FF70002AC00000B",
       "flags": 1},
      {"name": "tAsyncOnly", "remoteSystemId": 11, "remoteSystemName": "peer1", "nodeWwn": "2FF70002AC00000B",
       "flags": 128},
      {"name": "tNew", "status": "new", "remoteSystemId": 12, "remoteSystemName": "peer2",
       "nodeWwn": "2FF70002AC00000C"},
      {"name": "tRelease", "status": "release-unsupported", "remoteSystemId": 13, "remoteSystemName": "peer3",
       "nodeWwn": "2FF70002AC00000D"},
      {"name": "tFailing", "status": "failing", "remoteSystemId": 14, "remoteSystemName": "peer4",
       "nodeWwn": "2FF70002AC00000E"},
      {"name": "tFailed", "status": "failed", "remoteSystemId": 15, "remoteSystemName": "peer5",
       "nodeWwn": "2FF70002AC00000F"},
      {"name": "tDisabled", "status": "disabled", "remoteSystemId": 16, "remoteSystemName": "peer6",
       "nodeWwn": "2FF70002AC000010"},
      {"name": "tOdd", "status": 7, "remoteSystemId": 17, "remoteSystemName": "peer7",
       "nodeWwn": "2FF70002AC000011"},
      {"name": "tUnusable", "options": 8388608, "remoteSystemId": 18, "remoteSystemName": "peer8",
       "nodeWwn": "2FF70002AC000013"},
      {"name": "tComputed", "remoteSystemId": 19, "remoteSystemName": "peer9",
       "computedWwn": "2FF70002AC000012", "flags": 1},
      {"name": "tUnknown", "remoteSystemId": 20, "remoteSystemName": "peer10"}
    ],
    "groups": [
      {"name": "gSync", "domain": "dom1",
       "targets": [{"target": "tSyncOnly", "mode": "sync", "state": "started", "lastSync": "-1m"}],
       "volumes": [{"name": "rv1", "maps": [{"target": "tSyncOnly", "status": "synced", "lastSync": "-1m"}]}]},
      {"name": "gByModeSync", "domain": "dom1", "role": "secondary",
       "targets": [{"target": "tReady", "mode": "sync", "state": "started", "options": 4194304}],
       "volumes": [{"name": "rv2", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-1m"}]}]},
      {"name": "gByModePeriodic", "domain": "dom1",
       "targets": [{"target": "tReady", "mode": "periodic", "state": "started", "options": 4194304}]},
      {"name": "gNoDomain",
       "targets": [{"target": "tReady", "state": "started", "lastSync": "-5m"}],
       "volumes": [{"name": "rv3", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-5m"}]}]},
      {"name": "gNew", "domain": "dom1", "targets": [{"target": "tReady"}], "volumes": ["rv4"]},
      {"name": "gEmpty", "domain": "dom1", "targets": [{"target": "tReady"}]},
      {"name": "gTwo", "domain": "dom2",
       "targets": [{"target": "tReady", "state": "started", "lastSync": "-2m"},
                   {"target": "tComputed", "state": "started", "lastSync": "-2m"}],
       "volumes": [
         {"name": "rv5", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-2m"},
                                  {"target": "tComputed", "status": "synced", "lastSync": "-2m"}]},
         {"name": "rv6", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-2m"},
                                  {"target": "tComputed", "absent": true}]}]},
      {"name": "gUnknown", "domain": "dom2",
       "targets": [{"target": "tUnknown", "state": "started", "lastSync": "-3m"}],
       "volumes": [{"name": "rv7", "maps": [{"target": "tUnknown", "status": "synced", "lastSync": "-3m"}]}]}
    ]
  }
})";
}

// One group per way the state of a remote copy volume shows, each with one
// volume "cv<nn>" on tReady unless told: the volume's map status, the group
// target's mode and state, and the group's direction and recovery state.
inline const char* copyStateGroups()
{
    return R"(
      {"name": "csNewOnNewTarget", "targets": [{"target": "tReady"}],
       "volumes": [{"name": "cv01", "maps": [{"target": "tReady", "status": "new"}]}]},
      {"name": "csRemoteOnStopped", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv02", "maps": [{"target": "tReady", "status": 4}]}]},
      {"name": "csNewSyncOnFailsafe", "targets": [{"target": "tReady", "state": "failsafe"}],
       "volumes": [{"name": "cv03", "maps": [{"target": "tReady", "status": "new-sync"}]}]},
      {"name": "csNewNoSyncStarted", "targets": [{"target": "tReady", "state": "started"}],
       "volumes": [{"name": "cv04", "maps": [{"target": "tReady", "status": "new-no-sync"}]}]},
      {"name": "csSyncingRecovering", "natural": "secondary", "drState": "recover-in-progress",
       "drStepEnds": "+1d", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv05", "maps": [{"target": "tReady", "status": "syncing"}]}]},
      {"name": "csSyncingRecovered", "natural": "secondary", "drState": "recover-done",
       "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv06", "maps": [{"target": "tReady", "status": 5}]}]},
      {"name": "csSyncing", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv07", "maps": [{"target": "tReady", "status": "syncing",
                                               "syncLength": 4096, "syncOffset": 1024}]}]},
      {"name": "csSyncingSecondary", "role": "secondary", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv24", "maps": [{"target": "tReady", "status": "syncing",
                                               "syncLength": 4096, "syncOffset": 1024}]}]},
      {"name": "csSyncedByMode", "targets": [{"target": "tReady", "state": "started", "options": 4194309}],
       "volumes": [{"name": "cv08", "maps": [{"target": "tReady", "status": "synced"}]}]},
      {"name": "csSyncedRestoring", "natural": "secondary", "drState": "restore-in-progress",
       "drStepEnds": "+1d", "targets": [{"target": "tReady", "state": "started", "lastSync": "-9m"}],
       "volumes": [{"name": "cv09", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-9m"}]}]},
      {"name": "csSynced", "targets": [{"target": "tReady", "state": "started", "lastSync": "-5m"}],
       "volumes": [{"name": "cv10", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-5m",
                                               "wwnStatus": "computed"}]}]},
      {"name": "csFailingOver", "natural": "secondary", "drState": "failover-in-progress",
       "drStepEnds": "+1d", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv11", "maps": [{"target": "tReady", "status": "synced"}]}]},
      {"name": "csFailedOver", "natural": "secondary", "drState": "failover-done",
       "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv12", "maps": [{"target": "tReady", "status": "synced"}]}]},
      {"name": "csSyncedTargetFailed", "targets": [{"target": "tFailed", "state": "stopped"}],
       "volumes": [{"name": "cv13", "maps": [{"target": "tFailed", "status": "synced"}]}]},
      {"name": "csSyncedSplit",
       "targets": [{"target": "tReady", "mode": "sync", "state": "stopped", "lastSync": "-10m"}],
       "volumes": [{"name": "cv14", "maps": [{"target": "tReady", "status": "synced", "lastSync": "-10m"}]}]},
      {"name": "csUnsynced",
       "targets": [{"target": "tReady", "mode": "async", "state": "started", "lastSync": "-1h"}],
       "volumes": [{"name": "cv15", "maps": [{"target": "tReady", "status": "unsynced", "lastSync": "-1h"}]}]},
      {"name": "csLdChecking",
       "targets": [{"target": "tReady", "mode": "semisync", "state": "started"}],
       "volumes": [{"name": "cv16", "maps": [{"target": "tReady", "status": "ld-checking"}]}]},
      {"name": "csStale", "targets": [{"target": "tReady", "state": "started"}],
       "volumes": [{"name": "cv17", "maps": [{"target": "tReady", "status": "stale"}]}]},
      {"name": "csStoppedTargetFailed", "targets": [{"target": "tFailed", "state": "stopped"}],
       "volumes": [{"name": "cv18", "maps": [{"target": "tFailed", "status": "stopped"}]}]},
      {"name": "csStoppedSplit", "targets": [{"target": "tReady", "state": "stopped"}],
       "volumes": [{"name": "cv19", "maps": [{"target": "tReady", "status": "stopped"}]}]},
      {"name": "csRepairing", "targets": [{"target": "tReady", "state": "started"}],
       "volumes": [{"name": "cv20", "maps": [{"target": "tReady", "status": "repairing"}]}]},
      {"name": "csFailsafe", "targets": [{"target": "tReady", "state": "started"}],
       "volumes": [{"name": "cv21", "maps": [{"target": "tReady", "status": "failsafe"}]}]},
      {"name": "csMixed", "targets": [{"target": "tReady", "state": "started"}],
       "volumes": [{"name": "cv22", "maps": [{"target": "tReady", "status": "synced"}]},
                   {"name": "cv23", "maps": [{"target": "tReady", "status": "new"}]}]})";
}

// The remote copy test array with the groups above, gLong and the snapshot
// vvsets (see the head of this file).
inline std::string remoteCopyStateTestArray()
{
    std::string volumes;
    for (int i = 1; i <= 24; i++)
        volumes += std::string(",\n    {\"name\": \"cv") + (i < 10 ? "0" : "") + std::to_string(i) +
            "\", \"usrCpg\": \"FC_r5\", \"sizeMiB\": 1024}";
    std::string longVolumes;
    std::string longMaps;
    std::string longSnaps;
    for (int i = 0; i < 9; i++)
    {
        const std::string base = "lv" + std::to_string(i);
        // 31 characters each: nine join to 287.
        const std::string snap = "gLong_snapshot_of_volume_lv" + std::to_string(i) + "_ok";
        volumes += ",\n    {\"name\": \"" + base + "\", \"usrCpg\": \"FC_r5\", \"sizeMiB\": 256}";
        longVolumes += ",\n    {\"name\": \"" + snap + "\", \"type\": \"virtual-copy\", \"copyOf\": \"" +
            base + "\", \"readOnly\": true}";
        longMaps += std::string(i ? ", " : "") + "{\"name\": \"" + base +
            "\", \"maps\": [{\"target\": \"tReady\", \"status\": \"synced\"}]}";
        longSnaps += std::string(i ? ", " : "") + "\"" + snap + "\"";
    }
    volumes += longVolumes +
        ",\n    {\"name\": \"rv5_snap\", \"type\": \"virtual-copy\", \"copyOf\": \"rv5\", \"readOnly\": true}";

    std::string text = remoteCopyTestArray();
    const std::string lastVolume = R"({"name": "rv7", "usrCpg": "NL_r6", "sizeMiB": 2048})";
    text.insert(text.find(lastVolume) + lastVolume.size(), volumes);
    const std::string vvsets = R"("vvsets": [
    {"name": "gTwo_part", "members": ["rv5_snap"], "keyValues": {"parentRCGroup": "gTwo"}},
    {"name": "gLong_snaps", "members": [)" +
        longSnaps + R"(], "keyValues": {"parentRCGroup": "gLong"}}
  ],
  )";
    text.insert(text.find("\"remoteCopy\""), vvsets);
    const std::string groups = std::string(",") + copyStateGroups() +
        ",\n      {\"name\": \"gLong\", \"targets\": [{\"target\": \"tReady\", \"state\": \"started\"}], "
        "\"volumes\": [" +
        longMaps + "]}";
    text.insert(text.rfind("]\n  }\n}"), groups + "\n    ");
    return text;
}

}  // namespace zda_test

#endif
