// One libxml2 document: the few steps that readers and writers of XML take. Each failed step throws the MGErr that says
// which call failed and with which name or value, so a caller never tests a result; err_description bears what libxml2
// or the system said of it, with libxml2's number in uint32_param or errno in err_code, or the element and line that lack
// what was asked for. libxml2 itself prints nothing.
// Documents keep to the bounds of config/xml_parsing.h: a document type declaration, for one, is refused where it
// begins. Names and values are UTF-8. Nodes belong to the document and die with it. Each thread may use documents of
// its own.
#pragma once

#include "config/xml_library.h"

#include <libxml/tree.h>

#include <cstdint>
#include <memory>
#include <string>

class MGLibxml {
public:
    MGLibxml();                              // an empty document of XML version 1.0
    explicit MGLibxml(const char* file);     // parses a regular file of this very name, as xmlReadFile without options
    MGLibxml(const char* text, int options); // parses a string with xmlReadDoc's options
    ~MGLibxml() = default;                   // xmlFreeDoc; the last document out: xmlCleanupParser
    MGLibxml(const MGLibxml&) = delete;
    MGLibxml& operator=(const MGLibxml&) = delete;

    // Gives a text back to libxml2; null is fine.
    static void Free(xmlChar* text);
    struct Freed {
        void operator()(xmlChar* text) const { Free(text); }
    };
    // A text that libxml2 allocated and the holder owns.
    using Text = std::unique_ptr<xmlChar, Freed>;

    // --- Writing ---

    // Puts a comment ahead of the root element; comes before AddDocRoot.
    void AddDocComment(const char* text);
    xmlNode* AddDocRoot(const char* name);
    xmlNode* AddChildToNode(xmlNode* parent, const char* name);
    // Attributes stand in the file in the order in which they were set.
    void SetTextProp(xmlNode* node, const char* name, const char* value);
    void SetNumberProp(xmlNode* node, const char* name, int32_t value);
    void SetNumber64Prop(xmlNode* node, const char* name, uint64_t value);
    // value points to an int32_t, or with is_64 to a uint64_t; format fits it.
    void SetNumberPropPrintf(xmlNode* node, const char* name, const char* format, const void* value, bool is_64);
    // Replace the node's content. The text is taken as XML has it: "&" and "<" in it must be escaped.
    void SetContentToNode(xmlNode* node, const char* text);
    void SetLenContentToNode(xmlNode* node, const char* text, int length);
    void SetStringContentToNode(xmlNode* node, const std::string& text);
    // Formatted, in UTF-8, in place, as config/xml_saving.h tells. A failure before the file's room is found leaves its
    // content as it was.
    void SaveFile(const char* file);
    // The same into a string, without empty-element tags.
    void SaveString(std::string& text);

    // --- Reading: elements ---

    xmlNode* GetRoot() const;
    const char* GetName(const xmlNode* node) const;
    // The first child element of that name; null where there is none.
    xmlNode* GetFirstChildrenIfNoRetNull(const xmlNode* node, const char* name) const;
    // The same; none is a failure.
    xmlNode* GetFirstChildren(const xmlNode* node, const char* name) const;
    // The next sibling element of that name, or null.
    xmlNode* GetNextNode(const xmlNode* node, const char* name) const;
    bool IsChildren(const xmlNode* node, const char* name) const;

    // --- Reading: attributes and content ---

    bool IsProp(const xmlNode* node, const char* name) const;
    Text GetTextProp(const xmlNode* node, const char* name) const;
    std::string GetStringProp(const xmlNode* node, const char* name) const;
    // Decimal text by the rules of std::stoi: leading white space and a sign are taken, what follows the digits is
    // ignored; no digits, or a number out of range, is a failure.
    int32_t GetNumberProp(const xmlNode* node, const char* name) const;
    uint64_t GetNumber64Prop(const xmlNode* node, const char* name) const;
    // value points to an int32_t, or with is_64 to a uint64_t.
    void GetNumberPropExt(const xmlNode* node, const char* name, void* value, bool is_64) const;
    // May be null.
    Text GetContentFromNode(const xmlNode* node) const;
    std::string GetStringContentFromNode(const xmlNode* node) const;

    // --- Reading: the document; all owned by it, null where it has none ---

    const char* GetVersion() const;
    const char* GetEncoding() const;
    // The first comment among the document's children.
    const char* GetComment() const;

private:
    struct DocumentFreed {
        void operator()(xmlDoc* document) const;
    };
    XmlLibrary library_; // outlives the document
    std::unique_ptr<xmlDoc, DocumentFreed> document_;

    // The attribute of that name, or null. Readers mostly ask in the file's order, so the one behind the last is tried
    // first.
    const xmlAttr* find_prop(const xmlNode* node, const char* name) const;
    mutable const xmlAttr* next_prop_ = nullptr;
};
