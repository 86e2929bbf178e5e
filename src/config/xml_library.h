// libxml2 as the documents of all threads share it: its process-wide state, and what it reports in one thread.
#pragma once

#include "app/mg_err.h"

#include <libxml/xmlerror.h>

// Each document holds one as long as it lives. The first one in prepares libxml2; the last one out gives its
// process-wide state back (xmlCleanupParser), unless another living thread has used it, whose part of the state would
// be lost then. Any thread may hold any number of them; a thread_local object that holds some is to be no older than
// the first document of its thread, or it would outlive what counts the thread.
class XmlLibrary {
public:
    XmlLibrary();
    ~XmlLibrary();
    XmlLibrary(const XmlLibrary&) = delete;
    XmlLibrary& operator=(const XmlLibrary&) = delete;
};

// Takes what libxml2 reports in this thread as long as it lives; libxml2 prints nothing meanwhile. Only the first error
// is kept, since those behind it mostly follow from it. Never allocates.
class XmlReports {
public:
    XmlReports();
    ~XmlReports();
    XmlReports(const XmlReports&) = delete;
    XmlReports& operator=(const XmlReports&) = delete;

    // An error that libxml2 doesn't know of: why a document is refused at this place, or a failed system call.
    void refuse(const char* why, int line = 0, int column = 0);
    void add_errno(int code);

    // Whether anything was reported; a result that says otherwise isn't to be trusted in what is written.
    bool any() const { return *text_; }
    // Whether the document is no good whatever libxml2 made of it: refused, or cut short for want of memory.
    bool spoilt() const { return spoilt_; }
    // Puts the error and its place into err_description, with it errno into err_code or libxml2's number into
    // uint32_param: the two count alike.
    void complete(MGErr& err) const;

private:
    void keep(int system_code, int library_code, const char* text, int line, int column);

    // What xmlSetStructuredErrorFunc sets in this thread. libxml2 asks which thread it is each time; this is made for
    // every step over a document.
    xmlStructuredErrorFunc& receiver_;
    void*& receiver_data_;
    xmlStructuredErrorFunc earlier_;
    void* earlier_data_;
    bool spoilt_ = false;
    int system_code_ = 0;
    int library_code_ = 0;
    int line_ = 0;
    int column_ = 0;
    char text_[512]; // ends at once while nothing was reported
};
