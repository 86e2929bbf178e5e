// The steps over libxml2, each with the error that it throws.
#include "config/mg_libxml.h"

#include "app/mg_err.h"
#include "config/xml_parsing.h"
#include "config/xml_saving.h"
#include "runtime/descriptor_io.h"

#include <libxml/xmlsave.h>

#include <charconv>
#include <cstring>
#include <stdexcept>

using namespace vorma;

namespace {

const xmlChar* xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

const char* plain(const xmlChar* text) {
    return reinterpret_cast<const char*>(text);
}

// xmlStrEqual of two names that are there, by the C library: libxml2 takes byte by byte.
bool is_name(const xmlChar* is, const char* name) {
    return std::strcmp(plain(is), name) == 0;
}

// Where in its file an element stands that lacks what was asked for.
std::string place_of(const xmlNode* element) {
    const long line = xmlGetLineNo(element);
    return "Элемент «" + std::string(plain(element->name)) + "»" + (line > 0 ? ", строка " + std::to_string(line) : "");
}

// An operation of this class, as its errors name it, on an element, if it reads one.
struct Operation {
    const char* mess_1;
    const char* func_1;
    const xmlNode* element = nullptr;

    [[noreturn]] void fails(const char* mess_2, const char* func_2, const char* opt_param = "",
                            const char* str_param = "", const XmlReports* reports = nullptr) const {
        MGErr err = error_of(func_1, mess_1);
        err.opt_param = opt_param ? opt_param : ""; // a name that a caller gives may be null
        err.str_param = str_param ? str_param : "";
        if (element) err.err_description = place_of(element);
        if (reports) reports->complete(err);
        fail(err, mess_2, func_2);
    }
};

// The same with what libxml2 reports meanwhile. A step that wants for memory may give back half of what it should, so a
// result is only good where nothing was reported.
struct ReportingOperation {
    Operation names;
    XmlReports reports = {};

    [[noreturn]] void fails(const char* mess_2, const char* func_2, const char* opt_param = "",
                            const char* str_param = "") const {
        names.fails(mess_2, func_2, opt_param, str_param, &reports);
    }
};

// The first node from `node` on, along its siblings, that is an element of that name; any element where it is null.
xmlNode* element_from(xmlNode* node, const char* name) {
    for (; node; node = node->next)
        if (node->type == XML_ELEMENT_NODE && (!name || is_name(node->name, name))) return node;
    return nullptr;
}

} // namespace

void MGLibxml::DocumentFreed::operator()(xmlDoc* document) const {
    xmlFreeDoc(document);
}

MGLibxml::MGLibxml() {
    at_edge("MGLibxml::MGLibxml", [&] {
        const ReportingOperation operation{{"Ошибка конструктора класса XML документа", "MGLibxml"}};
        document_.reset(xmlNewDoc(xml("1.0")));
        if (!document_ || operation.reports.any()) operation.fails("Не удалось создать XML документ", "xmlNewDoc");
    });
}

MGLibxml::MGLibxml(const char* file) {
    at_edge("MGLibxml::MGLibxml", [&] {
        constexpr const char* mess_1 = "Ошибка конструктора класса с чтением XML документа из файла";
        constexpr const char* mess_2 = "Не удалось прочесть XML документ из файла";
        MGErr err = error_of("MGLibxml", mess_1);
        const FileDescriptor fd = open_regular(err, file, mess_2, "xmlReadFile", file);
        ReportingOperation operation{{mess_1, "MGLibxml"}};
        document_.reset(parse_xml_file(fd.get(), operation.reports));
        if (!document_) operation.fails(mess_2, "xmlReadFile", file);
    });
}

MGLibxml::MGLibxml(const char* text, int options) {
    at_edge("MGLibxml::MGLibxml", [&] {
        ReportingOperation operation{{"Ошибка конструктора класса с чтением XML документа из строки", "MGLibxml"}};
        document_.reset(parse_xml_text(text, options, operation.reports));
        if (!document_) operation.fails("Не удалось прочесть XML документ из строки", "xmlReadDoc");
    });
}

void MGLibxml::Free(xmlChar* text) {
    if (text) xmlFree(text);
}

// --- Writing ---

void MGLibxml::AddDocComment(const char* text) {
    at_edge("MGLibxml::AddDocComment", [&] {
        const ReportingOperation operation{
            {"Ошибка добавления комментария в заголовок XML документа", "AddDocComment"}};
        xmlNode* comment = xmlNewDocComment(document_.get(), xml(text));
        if (comment) xmlDocSetRootElement(document_.get(), comment);
        if (!comment || operation.reports.any())
            operation.fails("Не удалось создать комментарий", "xmlNewDocComment", text);
    });
}

xmlNode* MGLibxml::AddDocRoot(const char* name) {
    return at_edge("MGLibxml::AddDocRoot", [&] {
        const ReportingOperation operation{{"Ошибка добавления корневого раздела в XML документ", "AddDocRoot"}};
        xmlNode* root = xmlNewNode(nullptr, xml(name));
        if (root) xmlDocSetRootElement(document_.get(), root);
        if (!root || operation.reports.any()) operation.fails("Не удалось создать корневой раздел", "xmlNewNode", name);
        return root;
    });
}

xmlNode* MGLibxml::AddChildToNode(xmlNode* parent, const char* name) {
    return at_edge("MGLibxml::AddChildToNode", [&] {
        const ReportingOperation operation{{"Ошибка добавления нового раздела в уже существующий", "AddChildToNode"}};
        xmlNode* child = xmlNewChild(parent, nullptr, xml(name), nullptr);
        if (!child || operation.reports.any()) operation.fails("Не удалось добавить новый раздел", "xmlNewChild", name);
        return child;
    });
}

namespace {

void new_prop(const ReportingOperation& operation, xmlNode* node, const char* name, const char* value) {
    if (!xmlNewProp(node, xml(name), xml(value)) || operation.reports.any())
        operation.fails("Не удалось создать свойство", "xmlNewProp", name, value);
}

// Sets a content by `set`, which gives no result.
template <class Set>
void set_content(const char* func_1, const char* func_2, Set&& set) {
    const ReportingOperation operation{{"Ошибка установки содержимого раздела XML документа", func_1}};
    set();
    if (operation.reports.any()) operation.fails("Не удалось установить содержимое раздела", func_2);
}

} // namespace

void MGLibxml::SetTextProp(xmlNode* node, const char* name, const char* value) {
    at_edge("MGLibxml::SetTextProp", [&] {
        new_prop({{"Ошибка установки свойства в раздела в XML документа", "SetTextProp"}}, node, name, value);
    });
}

void MGLibxml::SetNumberProp(xmlNode* node, const char* name, int32_t value) {
    SetNumberPropPrintf(node, name, "%d", &value, false);
}

void MGLibxml::SetNumber64Prop(xmlNode* node, const char* name, uint64_t value) {
    SetNumberPropPrintf(node, name, "%lu", &value, true);
}

void MGLibxml::SetNumberPropPrintf(xmlNode* node, const char* name, const char* format, const void* value, bool is_64) {
    at_edge("MGLibxml::SetNumberPropPrintf", [&] {
        const ReportingOperation operation{
            {"Ошибка установки свойства в раздела в XML документа", "SetNumberPropPrintf"}};
        xmlChar digits[64];
        const int length = is_64 ? xmlStrPrintf(digits, sizeof digits, format, *static_cast<const uint64_t*>(value))
                                 : xmlStrPrintf(digits, sizeof digits, format, *static_cast<const int32_t*>(value));
        if (length == -1) operation.fails("Не удалось преобразовать число в строку", "xmlStrPrintf", name, format);
        new_prop(operation, node, name, plain(digits));
    });
}

void MGLibxml::SetContentToNode(xmlNode* node, const char* text) {
    at_edge("MGLibxml::SetContentToNode",
            [&] { set_content("SetContentToNode", "xmlNodeSetContent", [&] { xmlNodeSetContent(node, xml(text)); }); });
}

void MGLibxml::SetLenContentToNode(xmlNode* node, const char* text, int length) {
    at_edge("MGLibxml::SetLenContentToNode", [&] {
        set_content("SetLenContentToNode", "xmlNodeSetContentLen",
                    [&] { xmlNodeSetContentLen(node, xml(text), length); });
    });
}

void MGLibxml::SetStringContentToNode(xmlNode* node, const std::string& text) {
    at_edge("MGLibxml::SetStringContentToNode", [&] {
        set_content("SetStringContentToNode", "xmlNodeSetContent", [&] { xmlNodeSetContent(node, xml(text.c_str())); });
    });
}

void MGLibxml::SaveFile(const char* file) {
    at_edge("MGLibxml::SaveFile", [&] {
        ReportingOperation operation{{"Ошибка сохранения XML документа в файл", "SaveFile"}};
        if (!save_xml(document_.get(), file, operation.reports))
            operation.fails("Не удалось создать файл", "xmlSaveFormatFileEnc", file);
    });
}

void MGLibxml::SaveString(std::string& text) {
    at_edge("MGLibxml::SaveString", [&] {
        const ReportingOperation operation{{"Ошибка сохранения XML документа в строку", "SaveString"}};
        const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(), xmlBufferFree);
        if (!buffer) operation.fails("Не удалось создать буфер", "xmlBufferCreate");
        xmlSaveCtxt* save = xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_FORMAT | XML_SAVE_NO_EMPTY);
        if (!save) operation.fails("Не удалось сохранить данные в буфер", "xmlSaveToBuffer");
        const bool saved = xmlSaveDoc(save, document_.get()) != -1;
        const bool flushed = xmlSaveFlush(save) != -1;
        const bool closed = xmlSaveClose(save) != -1;
        if (!saved || !flushed || !closed || operation.reports.any())
            operation.fails("Не удалось сохранить данные в буфер", !saved ? "xmlSaveDoc" : "xmlSaveFlush");
        const xmlChar* content = xmlBufferContent(buffer.get());
        text = content ? plain(content) : "";
    });
}

// --- Reading: elements ---

xmlNode* MGLibxml::GetRoot() const {
    return at_edge("MGLibxml::GetRoot", [&] {
        xmlNode* root = element_from(document_->children, nullptr);
        if (!root)
            Operation{"Ошибка получения корневого раздела", "GetRoot"}.fails("Не удалось найти корневой раздел", "");
        return root;
    });
}

const char* MGLibxml::GetName(const xmlNode* node) const {
    return plain(node->name);
}

xmlNode* MGLibxml::GetFirstChildrenIfNoRetNull(const xmlNode* node, const char* name) const {
    return element_from(node->children, name);
}

xmlNode* MGLibxml::GetFirstChildren(const xmlNode* node, const char* name) const {
    return at_edge("MGLibxml::GetFirstChildren", [&] {
        xmlNode* child = GetFirstChildrenIfNoRetNull(node, name);
        if (!child)
            Operation{"Ошибка получения первого подчиненного раздела", "GetFirstChildren", node}.fails(
                "Не удалось найти подчиненный раздел", "", name);
        return child;
    });
}

xmlNode* MGLibxml::GetNextNode(const xmlNode* node, const char* name) const {
    return element_from(node->next, name);
}

bool MGLibxml::IsChildren(const xmlNode* node, const char* name) const {
    return GetFirstChildrenIfNoRetNull(node, name) != nullptr;
}

// --- Reading: attributes and content ---

namespace {

MGLibxml::Text get_prop(const Operation& operation, const char* name) {
    const XmlReports reports;
    MGLibxml::Text text(xmlGetProp(operation.element, xml(name)));
    if (!text || reports.any())
        operation.fails("Не удалось получить значение свойства", "xmlGetProp", name, "", &reports);
    return text;
}

// The value of an attribute, in the document where it stands there as one piece, which is how the parser leaves it.
class Value {
public:
    Value(const Operation& operation, const xmlAttr* attribute, const char* name) {
        if (!attribute) operation.fails("Не удалось получить значение свойства", "xmlGetProp", name);
        const xmlNode* content = attribute->children;
        const bool whole = content && !content->next && content->type == XML_TEXT_NODE && content->content;
        if (!whole) copy_ = get_prop(operation, name);
        text_ = plain(whole ? content->content : copy_.get());
    }

    const char* text() const { return text_; }

private:
    MGLibxml::Text copy_;
    const char* text_;
};

// Digits with nothing ahead of them, as every number that we write, need no locale. std::stoi takes blanks and a plus
// too.
bool is_plain_number(const char* text, int32_t& value) {
    return std::from_chars(text, text + std::strlen(text), value).ec == std::errc();
}

} // namespace

// The first attribute of that name, as xmlHasProp finds it. The next one is that unless another name space has it too.
const xmlAttr* MGLibxml::find_prop(const xmlNode* node, const char* name) const {
    bool is_next = next_prop_ && next_prop_->parent == node && name && is_name(next_prop_->name, name);
    for (const xmlAttr* prop = next_prop_; is_next && prop; prop = prop->prev) is_next = !prop->ns;
    const xmlAttr* found = is_next ? next_prop_ : xmlHasProp(node, xml(name));
    next_prop_ = found ? found->next : nullptr;
    return found;
}

bool MGLibxml::IsProp(const xmlNode* node, const char* name) const {
    return xmlHasProp(node, xml(name)) != nullptr;
}

MGLibxml::Text MGLibxml::GetTextProp(const xmlNode* node, const char* name) const {
    return at_edge("MGLibxml::GetTextProp", [&] {
        return get_prop({"Ошибка получения свойства раздела", "GetTextProp", node}, name);
    });
}

std::string MGLibxml::GetStringProp(const xmlNode* node, const char* name) const {
    return at_edge("MGLibxml::GetStringProp", [&] {
        return std::string(
            Value({"Ошибка получения свойства раздела", "GetTextProp", node}, find_prop(node, name), name).text());
    });
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
    at_edge("MGLibxml::GetNumberPropExt", [&] {
        const Operation operation{"Ошибка получения свойства раздела", "GetNumberPropExt", node};
        const Value text(operation, find_prop(node, name), name);
        try {
            if (is_64)
                *static_cast<uint64_t*>(value) = std::stoul(text.text());
            else if (!is_plain_number(text.text(), *static_cast<int32_t*>(value)))
                *static_cast<int32_t*>(value) = std::stoi(text.text());
        } catch (const std::logic_error&) { // what both throw: no digits, or out of range
            operation.fails("Свойства не содержит числовое значение", is_64 ? "stolu" : "stoi", name, text.text());
        }
    });
}

MGLibxml::Text MGLibxml::GetContentFromNode(const xmlNode* node) const {
    return at_edge("MGLibxml::GetContentFromNode", [&] {
        const ReportingOperation operation{{"Ошибка получения содержимого раздела", "GetContentFromNode"}};
        Text text(xmlNodeGetContent(node));
        if (operation.reports.any()) operation.fails("Не удалось получить содержимое раздела", "xmlNodeGetContent");
        return text;
    });
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
