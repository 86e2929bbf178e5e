// The one count of documents, and the receiver of libxml2's errors.
#include "config/xml_library.h"

#include "config/xml_saving.h"

#include <libxml/globals.h>
#include <libxml/parser.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <thread>

using namespace vorma;

namespace {

constexpr int oldest_libxml = 20904;

// libxml2 keeps its state for the first thread in its own variables, for any other in memory that the end of that
// thread gives back, if libxml2 wasn't reset before.
struct State {
    std::mutex mutex;
    int documents = 0;
    bool prepared = false;
    std::thread::id first_thread;
    int other_threads = 0; // alive, and having used libxml2 since it was prepared
};

State state;

struct OtherThread {
    bool counted = false;
    ~OtherThread() {
        if (!counted) return;
        const std::lock_guard lock(state.mutex);
        --state.other_threads;
    }
};

thread_local OtherThread other_thread;

void prepare(const XmlReports& reports) {
    if (reports.any()) {
        xmlCleanupParser();
        at_edge("XmlLibrary", [&] {
            MGErr err = error_of("XmlLibrary", "Ошибка подготовки библиотеки XML документов");
            reports.complete(err);
            fail(err, "Не удалось подготовить библиотеку", "xmlCheckVersion");
        });
    }
    register_saving();
    state.first_thread = std::this_thread::get_id();
    state.prepared = true;
}

} // namespace

XmlLibrary::XmlLibrary() {
    const std::lock_guard lock(state.mutex);
    const XmlReports reports;
    xmlCheckVersion(oldest_libxml);
    if (!state.prepared) prepare(reports);
    if (std::this_thread::get_id() != state.first_thread && !other_thread.counted) {
        other_thread.counted = true;
        ++state.other_threads;
    }
    ++state.documents;
}

XmlLibrary::~XmlLibrary() {
    const std::lock_guard lock(state.mutex);
    if (--state.documents > 0 || state.other_threads > 0) return;
    xmlCleanupParser();
    state.prepared = false;
}

XmlReports::XmlReports()
    : receiver_(xmlStructuredError), receiver_data_(xmlStructuredErrorContext), earlier_(receiver_),
      earlier_data_(receiver_data_) {
    *text_ = 0;
    receiver_data_ = this;
    // The parameter is a pointer to const in later versions.
    receiver_ = [](void* self, auto error) {
        auto& reports = *static_cast<XmlReports*>(self);
        if (error->code == XML_ERR_NO_MEMORY) {
            reports.spoilt_ = true;
            reports.add_errno(ENOMEM);
        } else if (error->level != XML_ERR_WARNING) {
            reports.keep(0, error->code, error->message ? error->message : "", error->line, error->int2);
        }
    };
}

XmlReports::~XmlReports() {
    receiver_ = earlier_;
    receiver_data_ = earlier_data_;
}

void XmlReports::refuse(const char* why, int line, int column) {
    spoilt_ = true;
    keep(0, 0, why, line, column);
}

void XmlReports::add_errno(int code) {
    try {
        keep(code, 0, vorma::system_error_text(code).c_str(), 0, 0);
    } catch (const std::bad_alloc&) { // the library, which is C, may be the caller
        keep(code, 0, "", 0, 0);
    }
}

void XmlReports::keep(int system_code, int library_code, const char* text, int line, int column) {
    if (any()) return;
    size_t length = std::min(std::strlen(text), sizeof text_ - 1);
    while (length > 0 && text[length - 1] == '\n') --length;
    if (text[length] & 0x80) // cut inside a character: without its beginning too
        while (length > 0 && (text[length] & 0xC0) == 0x80) --length;
    std::memcpy(text_, text, length);
    if (length == 0) text_[length++] = '?';
    text_[length] = 0;
    system_code_ = system_code;
    library_code_ = library_code;
    line_ = line;
    column_ = column;
}

void XmlReports::complete(MGErr& err) const {
    if (!any()) return;
    err.err_code = system_code_;
    err.uint32_param = static_cast<uint32_t>(library_code_);
    err.err_description = text_;
    if (line_ > 0) err.err_description += " (строка " + std::to_string(line_);
    if (line_ > 0 && column_ > 0) err.err_description += ", столбец " + std::to_string(column_);
    if (line_ > 0) err.err_description += ")";
}
