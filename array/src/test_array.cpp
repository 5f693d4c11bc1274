// The built-in small test array: enough of everything for the tests of the
// library and of its callers, small enough to reason about by hand.
//
//   users   admin (every right), operator (the replication rights, listed
//           key by key), viewer (refused every right with 1), noaccess
//           (refused by api_zdaOpenForCimserver)
//   CPGs    FC_r5, FC_r1 (domain dom1), NL_r6 (domain dom2), SSD_r1 (none)
//   volumes vol1, vol2 (dom1, with snapshot space), vol3 (dom1, none),
//           vol4, vol5 (dom2; vol5 thin), admvv (system volume),
//           vol1.rw and vol1.ro (virtual copies of vol1), vol2.clone
//           (physical copy of vol2)
//   vvsets  set1 {vol1, vol2}, set_empty {}, set_one {vol3},
//           set_dom2 {vol4, vol5} with parentRCGroup=rcg1, set_overlap {vol1}
//   ports   two FC, one iSCSI, two remote copy IP ports
#include <arpa/inet.h>

#include <cstring>

#include "call.h"

namespace zdasim
{

namespace
{

const char* const kReplicationKeys[] = {
    "zda_replicationservice.createelementreplica.createvvcopy",
    "zda_replicationservice.createelementreplica.createsv",
    "zda_replicationservice.creategroupreplica.creategroupvvcopy",
    "zda_replicationservice.creategroupreplica.creategroupsv",
    "zda_replicationservice.creategroupreplica.createmirror",
    "zda_replicationservice.modifyreplicasynchronization.abort ",
    "zda_replicationservice.modifyreplicasynchronization.syncrcopy",
    "zda_replicationservice.modifyreplicasynchronization.dissolve",
    "zda_replicationservice.modifyreplicasynchronization.setrcopygroup",
    "zda_replicationservice.modifyreplicasynchronization.resync",
    "zda_replicationservice.modifyreplicasynchronization.restore",
    "zda_replicationservice.modifyreplicasynchronization.split",
    "zda_replicationservice.modifylistsynchronization.resync",
    "zda_replicationservice.modifylistsynchronization.abort",
    "zda_replicationservice.modifylistsynchronization.dissolve",
    "zda_replicationservice.modifylistsynchronization.restore",
    "zda_replicationservice.deletegroup",
    "zda_storageconfigurationservice.returntostoragepool.basevv",
    "zda_storageconfigurationservice.returntostoragepool.physcopyvv",
    "zda_storageconfigurationservice.returntostoragepool.virtcopyvv",
    "zda_storageconfigurationservice.returntostoragepool",
    "zda_replicationservicecapabilities",
    "zda_replicationservice.creategroup",
    "zda_replicationservice.addmembers",
    "zda_replicationservice.removemembers",
    "zda_replicationservice.getreplicationrelationships",
    "zda_replicationservice.getreplicationrelationshipinstances",
    "zda_replicationservice.getavailabletargetelements",
    "zda_replicationservice.getpeersystems",
    "zda_replicationservice.getserviceaccesspoints",
    "zda_replicationgroup.modifyinstance",
};

Volume base(const std::string& name, const std::string& usrCpg, const std::string& snapCpg, api_u64_t sizeMiB,
    const std::string& domain, time_t created)
{
    Volume v;
    v.name = name;
    v.type = API_VV_TYPE_BASE;
    v.usrCpg = usrCpg;
    v.snapCpg = snapCpg;
    v.sizeMiB = sizeMiB;
    v.usedMiB = sizeMiB;
    v.domain = domain;
    v.creationTime = created;
    return v;
}

Volume copyOf(const Volume& parent, const std::string& name, int type, time_t created)
{
    Volume v = parent;
    v.id = 0;
    v.wwn = v.wwnRe = 0;
    v.name = name;
    v.type = type;
    v.baseId = parent.baseId;
    v.copyOfId = parent.id;
    v.creationTime = created;
    v.comment.clear();
    v.usedMiB = type == API_VV_TYPE_VIRTUAL_COPY ? 0 : parent.sizeMiB;
    return v;
}

Port port(int protocol, uint8_t node, uint8_t slot, uint8_t p, int lpid)
{
    Port out;
    out.record.protocol = protocol;
    out.record.node = node;
    out.record.slot = slot;
    out.record.port = p;
    out.record.linkUp = 1;
    out.record.lpid = lpid;
    return out;
}

}  // namespace

void loadTestArray(ArrayModel& m, time_t now)
{
    m.clear();
    SystemInfo& s = m.system;
    s.contact = "storage-admin@example.com";
    s.owner = "Example Storage Team";
    s.ipv4 = "192.0.2.10";
    s.ipv6 = "2001:db8::10";

    Role admin{"super", API_AUTH_ALLOWED, {}};
    Role edit{"edit", API_AUTH_DENIED, {}};
    for (const char* key : kReplicationKeys)
        edit.rights[key] = API_AUTH_ALLOWED;
    Role browse{"browse", API_AUTH_DENIED, {}};
    m.roles[admin.name] = admin;
    m.roles[edit.name] = edit;
    m.roles[browse.name] = browse;
    m.users["admin"] = User{"admin", "super", false};
    m.users["operator"] = User{"operator", "edit", false};
    m.users["viewer"] = User{"viewer", "browse", false};
    m.users["noaccess"] = User{"noaccess", "browse", true};

    m.addCpg(Cpg{0, "FC_r5", "dom1", 4u << 20, 3});
    m.addCpg(Cpg{0, "FC_r1", "dom1", 2u << 20, 2});
    m.addCpg(Cpg{0, "NL_r6", "dom2", 8u << 20, 4});
    m.addCpg(Cpg{0, "SSD_r1", "", 1u << 20, 2});

    const time_t day = 86400;
    Volume& vol1 = m.addVolume(base("vol1", "FC_r5", "FC_r1", 10240, "dom1", now - 30 * day));
    const Volume vol1Copy = vol1;
    Volume& vol2 = m.addVolume(base("vol2", "FC_r5", "FC_r1", 20480, "dom1", now - 30 * day));
    const Volume vol2Copy = vol2;
    m.addVolume(base("vol3", "FC_r5", "", 5120, "dom1", now - 20 * day));
    m.addVolume(base("vol4", "NL_r6", "NL_r6", 102400, "dom2", now - 10 * day));
    Volume vol5 = base("vol5", "NL_r6", "NL_r6", 51200, "dom2", now - 10 * day);
    vol5.policy |= VV_POLICY_THIN;
    vol5.usedMiB = 1024;
    m.addVolume(vol5);
    Volume admvv = base("admvv", "SSD_r1", "", 10240, "", now - 365 * day);
    admvv.policy |= VV_POLICY_SYSTEM;
    m.addVolume(admvv);

    Volume rw = copyOf(vol1Copy, "vol1.rw", API_VV_TYPE_VIRTUAL_COPY, now - day);
    m.addVolume(rw);
    Volume ro = copyOf(vol1Copy, "vol1.ro", API_VV_TYPE_VIRTUAL_COPY, now - day);
    ro.readOnly = true;
    m.addVolume(ro);
    Volume clone = copyOf(vol2Copy, "vol2.clone", API_VV_TYPE_PHYSICAL_COPY, now - 2 * day);
    clone.curWhenSynced = now - 3600;
    clone.copyProgress = 100;
    m.addVolume(clone);

    m.addSet(VVSet{0, "set1", "first set", "dom1", {"vol1", "vol2"}, {}});
    m.addSet(VVSet{0, "set_empty", "", "", {}, {}});
    m.addSet(VVSet{0, "set_one", "", "dom1", {"vol3"}, {}});
    m.addSet(VVSet{0, "set_dom2", "", "dom2", {"vol4", "vol5"}, {{"parentRCGroup", "rcg1"}}});
    m.addSet(VVSet{0, "set_overlap", "", "dom1", {"vol1"}, {}});

    Port fc0 = port(API_PORT_FC, 0, 1, 1, 1);
    fc0.record.wwn = 0x21000011AA000001ull;
    Port fc1 = port(API_PORT_FC, 1, 1, 1, 2);
    fc1.record.wwn = 0x21000011AA000002ull;
    Port iscsi = port(API_PORT_ISCSI, 0, 2, 1, 3);
    copyText(iscsi.record.iscsiName, "iqn.2026-01.local.zda-sim:0.2.1");
    copyText(iscsi.record.ipAddr, "192.0.2.21");
    Port rcip0 = port(API_PORT_RCIP, 0, 3, 1, 4);
    copyText(rcip0.record.ipAddr, "198.51.100.5");
    Port rcip1 = port(API_PORT_RCIP, 1, 3, 1, 5);
    copyText(rcip1.record.ipAddr, "198.51.100.6");
    rcip1.record.linkUp = 0;
    m.ports = {fc0, fc1, iscsi, rcip0, rcip1};
}

}  // namespace zdasim
