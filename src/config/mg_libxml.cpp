// The steps over libxml2, each with the error that it throws.
#include "config/mg_libxml.h"

#include "app/mg_err.h"

#include <libxml/parser.h>
#include <libxml/xmlsave.h>

#include <cstring>
#include <stdexcept>

using namespace vorma;

namespace {

constexpr int oldest_libxml = 20904;

const xmlChar* xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

const char* plain(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

// An operation of this class, as its errors name it.
struct Operation {
    const char* mess_1;
    const char* func_1;

    [[noreturn]] void fails(const char* mess_2, const char* func_2, const char* opt_param = "",
                            const char* str_param = "") const {
        MGErr err = error_of(func_1, mess_1);
        err.opt_param = opt_param;
        err.str_param = str_param;
        fail(err, mess_2, func_2);
    }
};

// What libxml2 has to say goes into the MGErr of the step that failed, not to standard error.
void prepare_libxml() {
    xmlCheckVersion(oldest_libxml);
    xmlSetStructuredErrorFunc(nullptr, [](void*, auto) {});
}

// Our documents declare no entities. A few kilobytes of them can stand for gigabytes of text, which libxml2 would build
// in memory when the attribute is taken, so such a document counts as unreadable.
bool is_readable(const xmlDoc* document) {
    return document && !(document->intSubset && document->intSubset->entities);
}

// The first node from `node` on, along its siblings, that is an element of that name; any element where it is null.
xmlNode* element_from(xmlNode* node, const char* name) {
    for (; node; node = node->next)
        if (node->type == XML_ELEMENT_NODE && (!name || xmlStrEqual(node->name, xml(name)))) return node;
    return nullptr;
}

} // namespace

void MGLibxml::DocumentFreed::operator()(xmlDoc* document) const {
    xmlFreeDoc(document);
    xmlCleanupParser();
}

MGLibxml::MGLibxml() {
    prepare_libxml();
    document_.reset(xmlNewDoc(xml("1.0")));
    if (!document_)
        Operation{"Ошибка конструктора класса XML документа", "MGLibxml"}.fails("Не удалось создать XML документ",
                                                                                "xmlNewDoc");
}

MGLibxml::MGLibxml(const char* file) {
    prepare_libxml();
    document_.reset(xmlReadFile(file, nullptr, 0));
    if (!is_readable(document_.get()))
        Operation{"Ошибка конструктора класса с чтением XML документа из файла", "MGLibxml"}.fails(
            "Не удалось прочесть XML документ из файла", "xmlReadFile", file);
}

MGLibxml::MGLibxml(const char* text, int options) {
    prepare_libxml();
    document_.reset(xmlReadDoc(xml(text), nullptr, nullptr, options));
    if (!is_readable(document_.get()))
        Operation{"Ошибка конструктора класса с чтением XML документа из строки", "MGLibxml"}.fails(
            "Не удалось прочесть XML документ из строки", "xmlReadDoc");
}

void MGLibxml::Free(xmlChar* text) {
    if (text) xmlFree(text);
}

// --- Writing ---

void MGLibxml::AddDocComment(const char* text) {
    xmlNode* comment = xmlNewDocComment(document_.get(), xml(text));
    if (!comment)
        Operation{"Ошибка добавления комментария в заголовок XML документа", "AddDocComment"}.fails(
            "Не удалось создать комментарий", "xmlNewDocComment", text);
    xmlDocSetRootElement(document_.get(), comment);
}

xmlNode* MGLibxml::AddDocRoot(const char* name) {
    xmlNode* root = xmlNewNode(nullptr, xml(name));
    if (!root)
        Operation{"Ошибка добавления корневого раздела в XML документ", "AddDocRoot"}.fails(
            "Не удалось создать корневой раздел", "xmlNewNode", name);
    xmlDocSetRootElement(document_.get(), root);
    return root;
}

xmlNode* MGLibxml::AddChildToNode(xmlNode* parent, const char* name) {
    xmlNode* child = xmlNewChild(parent, nullptr, xml(name), nullptr);
    if (!child)
        Operation{"Ошибка добавления нового раздела в уже существующий", "AddChildToNode"}.fails(
            "Не удалось добавить новый раздел", "xmlNewChild", name);
    return child;
}

namespace {

void new_prop(const Operation& operation, xmlNode* node, const char* name, const char* value) {
    if (!xmlNewProp(node, xml(name), xml(value)))
        operation.fails("Не удалось создать свойство", "xmlNewProp", name, value);
}

} // namespace

void MGLibxml::SetTextProp(xmlNode* node, const char* name, const char* value) {
    new_prop({"Ошибка установки свойства в раздела в XML документа", "SetTextProp"}, node, name, value);
}

void MGLibxml::SetNumberProp(xmlNode* node, const char* name, int32_t value) {
    SetNumberPropPrintf(node, name, "%d", &value, false);
}

void MGLibxml::SetNumber64Prop(xmlNode* node, const char* name, uint64_t value) {
    SetNumberPropPrintf(node, name, "%lu", &value, true);
}

void MGLibxml::SetNumberPropPrintf(xmlNode* node, const char* name, const char* format, const void* value, bool is_64) {
    const Operation operation{"Ошибка установки свойства в раздела в XML документа", "SetNumberPropPrintf"};
    xmlChar digits[64];
    const int length = is_64 ? xmlStrPrintf(digits, sizeof digits, format, *static_cast<const uint64_t*>(value))
                             : xmlStrPrintf(digits, sizeof digits, format, *static_cast<const int32_t*>(value));
    if (length == -1) operation.fails("Не удалось преобразовать число в строку", "xmlStrPrintf", name, format);
    new_prop(operation, node, name, plain(digits));
}

void MGLibxml::SetContentToNode(xmlNode* node, const char* text) {
    xmlNodeSetContent(node, xml(text));
}

void MGLibxml::SetLenContentToNode(xmlNode* node, const char* text, int length) {
    xmlNodeSetContentLen(node, xml(text), length);
}

void MGLibxml::SetStringContentToNode(xmlNode* node, const std::string& text) {
    xmlNodeSetContent(node, xml(text.c_str()));
}

void MGLibxml::SaveFile(const char* file) {
    if (xmlSaveFormatFileEnc(file, document_.get(), "UTF-8", 1) == -1)
        Operation{"Ошибка сохранения XML документа в файл", "SaveFile"}.fails("Не удалось создать файл",
                                                                              "xmlSaveFormatFileEnc", file);
}

void MGLibxml::SaveString(std::string& text) {
    at_edge("MGLibxml::SaveString", [&] {
        const Operation operation{"Ошибка сохранения XML документа в строку", "SaveString"};
        const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(), xmlBufferFree);
        if (!buffer) operation.fails("Не удалось создать буфер", "xmlBufferCreate");
        xmlSaveCtxt* save = xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_FORMAT | XML_SAVE_NO_EMPTY);
        if (!save) operation.fails("Не удалось сохранить данные в буфер", "xmlSaveToBuffer");
        xmlSaveDoc(save, document_.get());
        xmlSaveFlush(save);
        xmlSaveClose(save);
        const xmlChar* content = xmlBufferContent(buffer.get());
        text = content ? plain(content) : "";
    });
}

// --- Reading: elements ---

xmlNode* MGLibxml::GetRoot() const {
    xmlNode* root = element_from(document_->children, nullptr);
    if (!root) Operation{"Ошибка получения корневого раздела", "GetRoot"}.fails("Не удалось найти корневой раздел", "");
    return root;
}

const char* MGLibxml::GetName(const xmlNode* node) const {
    return plain(node->name);
}

xmlNode* MGLibxml::GetFirstChildrenIfNoRetNull(const xmlNode* node, const char* name) const {
    return element_from(node->children, name);
}

xmlNode* MGLibxml::GetFirstChildren(const xmlNode* node, const char* name) const {
    xmlNode* child = GetFirstChildrenIfNoRetNull(node, name);
    if (!child)
        Operation{"Ошибка получения первого подчиненного раздела", "GetFirstChildren"}.fails(
            "Не удалось найти подчиненный раздел", "", name);
    return child;
}

xmlNode* MGLibxml::GetNextNode(const xmlNode* node, const char* name) const {
    return element_from(node->next, name);
}

bool MGLibxml::IsChildren(const xmlNode* node, const char* name) const {
    return GetFirstChildrenIfNoRetNull(node, name) != nullptr;
}

// --- Reading: attributes and content ---

namespace {

MGLibxml::Text get_prop(const Operation& operation, const xmlNode* node, const char* name) {
    MGLibxml::Text text(xmlGetProp(node, xml(name)));
    if (!text) operation.fails("Не удалось получить значение свойства", "xmlGetProp", name);
    return text;
}

} // namespace

bool MGLibxml::IsProp(const xmlNode* node, const char* name) const {
    return Text(xmlGetProp(node, xml(name))) != nullptr;
}

MGLibxml::Text MGLibxml::GetTextProp(const xmlNode* node, const char* name) const {
    return get_prop({"Ошибка получения свойства раздела", "GetTextProp"}, node, name);
}

std::string MGLibxml::GetStringProp(const xmlNode* node, const char* name) const {
    return at_edge("MGLibxml::GetStringProp", [&] { return std::string(plain(GetTextProp(node, name).get())); });
}

int32_t MGLibxml::GetNumberProp(const xmlNode* node, const char* name) const {
    int32_t value = 0;
    GetNumberPropExt(node, name, &value, false);
    return value;
}

uint64_t MGLibxml::GetNumber64Prop(const xmlNode* node, const char* name) const {
    uint64_t value = 0;
    GetNumberPropExt(node, name, &value, true);
    return value;
}

void MGLibxml::GetNumberPropExt(const xmlNode* node, const char* name, void* value, bool is_64) const {
    const Operation operation{"Ошибка получения свойства раздела", "GetNumberPropExt"};
    const Text text = get_prop(operation, node, name);
    at_edge("MGLibxml::GetNumberPropExt", [&] {
        try {
            if (is_64)
                *static_cast<uint64_t*>(value) = std::stoul(plain(text.get()));
            else
                *static_cast<int32_t*>(value) = std::stoi(plain(text.get()));
        } catch (const std::logic_error&) { // what both throw: no digits, or out of range
            operation.fails("Свойства не содержит числовое значение", is_64 ? "stolu" : "stoi", name,
                            plain(text.get()));
        }
    });
}

MGLibxml::Text MGLibxml::GetContentFromNode(const xmlNode* node) const {
    return Text(xmlNodeGetContent(node));
}

std::string MGLibxml::GetStringContentFromNode(const xmlNode* node) const {
    return at_edge("MGLibxml::GetStringContentFromNode", [&] {
        const Text text = GetContentFromNode(node);
        return std::string(text ? plain(text.get()) : "");
    });
}

// --- Reading: the document ---

const char* MGLibxml::GetVersion() const {
    return plain(document_->version);
}

const char* MGLibxml::GetEncoding() const {
    return plain(document_->encoding);
}

const char* MGLibxml::GetComment() const {
    for (const xmlNode* node = document_->children; node; node = node->next)
        if (node->type == XML_COMMENT_NODE) return plain(node->content);
    return nullptr;
}
