// Looking a subject up: the key first, the text after it.
#include "config/admit_lookup.h"

#include "app/mg_err.h"
#include "runtime/mg_file.h"

using namespace vorma;

bool find_subject_in_admit(const std::vector<MGAdmit>& list, const std::string& subject, unsigned& index) {
    return at_edge("find_subject_in_admit", [&] {
        const uint32_t crc = MGFile::MakeCrc32Lower(subject);
        for (unsigned row = 0; row < list.size(); ++row) {
            if (list[row].crc_subject != crc || !MGFile::CompareUtf8(list[row].subject, subject, false)) continue;
            index = row;
            return true;
        }
        return false;
    });
}
