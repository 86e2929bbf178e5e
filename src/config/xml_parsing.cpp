// The parser's hooks, and the source that feeds it.
#include "config/xml_parsing.h"

#include "runtime/descriptor_io.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

using namespace vorma;

namespace {

constexpr int most_depth = 64;
constexpr int most_attributes = 256;
constexpr size_t most_names = 100'000; // bytes of the dictionary, whose blocks grow fourfold
constexpr size_t most_text = 16 << 20;
constexpr size_t most_in_element = 64 << 10;

constexpr const char* too_many_attributes = "Слишком много атрибутов в элементе";

// Where the parser's bytes come from: a descriptor, or else a text.
struct Source {
    XmlReports& reports;
    xmlParserCtxt* parser = nullptr; // the one that it feeds
    int fd = -1;
    const char* text = nullptr;
    size_t left = 0;
    size_t element_limit = std::numeric_limits<size_t>::max();
    size_t since_element = 0; // bytes handed out since an element began
};

Source& source_of(xmlParserCtxt* parser) {
    return *static_cast<Source*>(parser->_private);
}

// Whether the start tag that is being read has more attributes or name spaces than the hook would take. libxml2 holds
// each of them against all others before it asks the hook. Its table of attributes has five places for each and grows
// by doubling, so twice the room that the most would need is room for too many.
bool is_crowded(const xmlParserCtxt* parser) {
    return parser->maxatts > 2 * 5 * (most_attributes + 1) || parser->nsNr > 2 * most_attributes;
}

// Which bound what was handed out so far oversteps; null for none. At its own limit the dictionary would pass for a
// want of memory.
const char* overstepped(const Source& source) {
    if (is_crowded(source.parser)) return too_many_attributes;
    if (source.since_element > source.element_limit) return "Слишком длинный элемент";
    if (xmlDictGetUsage(source.parser->dict) > most_names) return "Слишком много разных имён элементов и атрибутов";
    return nullptr;
}

int next_bytes(void* data, char* buffer, int size) {
    auto& source = *static_cast<Source*>(data);
    if (const char* why = overstepped(source)) {
        source.reports.refuse(why, xmlSAX2GetLineNumber(source.parser));
        return -1;
    }
    ssize_t got = 0;
    if (source.fd >= 0) {
        got = read_some(source.fd, reinterpret_cast<uint8_t*>(buffer), static_cast<size_t>(size));
        if (got < 0) source.reports.add_errno(errno);
    } else {
        got = static_cast<ssize_t>(std::min(source.left, static_cast<size_t>(size)));
        std::copy_n(source.text, got, buffer);
        source.text += got;
        source.left -= static_cast<size_t>(got);
    }
    if (got > 0) source.since_element += static_cast<size_t>(got);
    return static_cast<int>(got);
}

void refuse(xmlParserCtxt* parser, const char* why) {
    source_of(parser).reports.refuse(why, xmlSAX2GetLineNumber(parser), xmlSAX2GetColumnNumber(parser));
    xmlStopParser(parser);
}

void document_type(void* data, const xmlChar*, const xmlChar*, const xmlChar*) {
    refuse(static_cast<xmlParserCtxt*>(data), "Объявление типа документа (DOCTYPE) не допускается");
}

// Looks at an element before libxml2 adds it to the document, which takes a walk for each attribute.
void element(void* data, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri, int namespaces_size,
             const xmlChar** namespaces, int attributes_size, int defaulted, const xmlChar** attributes) {
    auto* parser = static_cast<xmlParserCtxt*>(data);
    source_of(parser).since_element = 0;
    if (attributes_size > most_attributes || namespaces_size > most_attributes)
        return refuse(parser, too_many_attributes);
    if (parser->nameNr >= most_depth) return refuse(parser, "Слишком глубокая вложенность элементов");
    xmlSAX2StartElementNs(data, name, prefix, uri, namespaces_size, namespaces, attributes_size, defaulted, attributes);
}

// The calls for a parser with hooks give what xmlReadFile and xmlReadDoc give. Reading goes through a source of ours,
// so that no name of a file is taken for more than that.
xmlDoc* parse(Source& source, int options) {
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(), xmlFreeParserCtxt);
    if (!parser) return nullptr;
    source.parser = parser.get();
    parser->_private = &source;
    parser->sax->internalSubset = document_type;
    parser->sax->startElementNs = element;
    xmlDoc* document = xmlCtxtReadIO(parser.get(), next_bytes, nullptr, &source, nullptr, nullptr, options);
    if (!source.reports.spoilt()) return document;
    xmlFreeDoc(document);
    return nullptr;
}

} // namespace

xmlDoc* parse_xml_file(int fd, XmlReports& reports) {
    Source source{.reports = reports, .fd = fd};
    return parse(source, 0);
}

xmlDoc* parse_xml_text(const char* text, int options, XmlReports& reports) {
    const size_t size = text ? strnlen(text, most_text + 1) : 0;
    if (size > most_text) {
        reports.refuse("Слишком длинный документ");
        return nullptr;
    }
    Source source{.reports = reports, .text = text, .left = size, .element_limit = most_in_element};
    // The older interface of the parser would go past the hooks, and its limits stay.
    return parse(source, options & ~(XML_PARSE_SAX1 | XML_PARSE_HUGE));
}
