// libxml2's output, gathered and then written over a file.
#include "config/xml_saving.h"

#include "runtime/descriptor_io.h"

#include <libxml/xmlIO.h>

#include <cerrno>
#include <new>
#include <string>

using namespace vorma;

namespace {

struct Saving {
    const char* file;
    XmlReports& reports;
    std::string content = {};
};

// libxml2 asks for its output by name, and may unescape it first; so the name is not what it is found by.
thread_local Saving* saving = nullptr;

// A device or a pipe is no place for a document.
bool may_be_written(const char* file) {
    struct stat info;
    return stat(file, &info) != 0 || S_ISREG(info.st_mode) || S_ISDIR(info.st_mode);
}

int takes_output(const char*) {
    return saving != nullptr;
}

void* open_output(const char*) {
    return saving;
}

int gather(void* data, const char* bytes, int size) {
    auto& output = *static_cast<Saving*>(data);
    try {
        output.content.append(bytes, static_cast<size_t>(size));
        return size;
    } catch (const std::bad_alloc&) {
        output.reports.add_errno(ENOMEM);
        return -1;
    }
}

int finish(void* data) {
    auto& output = *static_cast<Saving*>(data);
    if (output.reports.any()) return -1; // the content is not whole
    const auto* bytes = reinterpret_cast<const uint8_t*>(output.content.data());
    if (!may_be_written(output.file))
        output.reports.refuse("Это не обычный файл");
    else if (overwrite_file(output.file, bytes, output.content.size()))
        output.reports.add_errno(errno);
    return output.reports.any() ? -1 : 0;
}

} // namespace

void register_saving() {
    xmlRegisterOutputCallbacks(takes_output, open_output, gather, finish);
}

bool save_xml(xmlDoc* document, const char* file, XmlReports& reports) {
    Saving output{file, reports};
    saving = &output;
    document->compression = 0;
    const int written = xmlSaveFormatFileEnc(file, document, "UTF-8", 1);
    saving = nullptr;
    return written != -1 && !reports.any();
}
