#include "Store/LockPatience.h"

#include <sqlite3.h>

#include <algorithm>

namespace tallowbrook::host {
namespace {

using std::chrono::microseconds;

// The system's own interface but for the sleep.
struct PatientVFS : sqlite3_vfs {
    PatientVFS() : sqlite3_vfs{} {
        system = sqlite3_vfs_find(nullptr);
        if (system == nullptr) return;
        static_cast<sqlite3_vfs&>(*this) = *system;
        zName = "tallowbrook";
        pNext = nullptr;
        xSleep = [](sqlite3_vfs* self, int duration) {
            return static_cast<PatientVFS*>(self)->sleep(duration);
        };
        isRegistered = sqlite3_vfs_register(this, 0) == SQLITE_OK;
    }

    int sleep(int duration) {
        const int taken = static_cast<int>(std::min<microseconds::rep>(duration, left.count()));
        if (taken <= 0) return 0;
        left -= microseconds{taken};
        return system->xSleep(system, taken);
    }

    sqlite3_vfs* system = nullptr;
    bool isRegistered = false;
    microseconds left = LockPatience::whole;
};

PatientVFS& patientVFS() {
    // SQLite keeps the address.
    static PatientVFS vfs;
    return vfs;
}

}  // namespace

const char* LockPatience::vfsName() { return patientVFS().isRegistered ? patientVFS().zName : ""; }

void LockPatience::renew() { patientVFS().left = whole; }

bool LockPatience::sleep(std::chrono::milliseconds duration) {
    auto& vfs = patientVFS();
    return vfs.isRegistered && vfs.sleep(static_cast<int>(microseconds{duration}.count())) > 0;
}

}  // namespace tallowbrook::host
