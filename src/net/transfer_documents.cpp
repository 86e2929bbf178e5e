// A document is a root with its mark, a child `header` with attributes, and for some kinds lists behind it:
//     <gwc mark="VORQSGWC"><header device="…" …/><adrs quantity="1"><adr ip="…" net="…"/></adrs>…</gwc>
#include "net/transfer_documents.h"

#include "app/mg_err.h"
#include "config/file_checks.h"
#include "config/mg_libxml.h"
#include "config/xml_tables.h"
#include "net/exact_attrs.h"
#include "runtime/mg_file.h"

#include <utility>

using namespace vorma;

namespace {

constexpr const char* MARK_VORMA_HEADER = "VORQSHDR";
constexpr const char* MARK_VORMA_CRC = "VORQSCRC";
constexpr const char* MARK_VORMA_HEADER2 = "VORQSHD2";
constexpr const char* MARK_VORMA_GWC = "VORQSGWC";
constexpr const char* MARK_VORMA_FCP = "VORQSFCP";

// What tells one kind of document from another.
struct Kind {
    const char* root;
    const char* mark;
    const char* mark_name; // of its constant, for errors
    const char* words;     // the same for people
};

constexpr Kind file_header = {"file", MARK_VORMA_HEADER, "MARK_VORMA_HEADER", "Резервного копирования"};
constexpr Kind file_crc = {"file", MARK_VORMA_CRC, "MARK_VORMA_CRC", "Резервного копирования"};
constexpr Kind file2_header = {"file2", MARK_VORMA_HEADER2, "MARK_VORMA_HEADER2", "Передачи файла 2"};
constexpr Kind gw_client = {"gwc", MARK_VORMA_GWC, "MARK_VORMA_GWC", "Клиентского шлюза"};
constexpr Kind file_client = {"fcp", MARK_VORMA_FCP, "MARK_VORMA_FCP", "Файлового клеинта"};

// The two directions in which a document is walked.
struct Reading {
    const MGLibxml& xml;
    const xmlNode* root;
    const xmlNode* node; // header
    MGErr& err;          // what the count checks complete

    template <class Record, class Table>
    void header(Record& record, const Table& attrs) const {
        read_attrs(xml, node, record, attrs);
    }

    template <class Row, class Table>
    void list(const char* name, const char* row_name, std::vector<Row>& rows, const Table& attrs) const {
        const xmlNode* list = xml.GetFirstChildren(root, name);
        rows.clear();
        read_rows(xml, list, row_name, xml.GetNumberProp(list, "quantity"), err, rows,
                  [&](const xmlNode* row_node, Row& row) { read_attrs(xml, row_node, row, attrs); });
    }
};

struct Writing {
    MGLibxml& xml;
    xmlNode* root;
    xmlNode* node; // header
    MGErr& err;    // what a text that can't be written completes

    template <class Record, class Table>
    void header(const Record& record, const Table& attrs) const {
        write_exact_attrs(xml, node, record, attrs, err);
    }

    template <class Row, class Table>
    void list(const char* name, const char* row_name, const std::vector<Row>& rows, const Table& attrs) const {
        write_rows(xml, xml.AddChildToNode(root, name), row_name, rows,
                   [&](xmlNode* row_node, const Row& row) { write_exact_attrs(xml, row_node, row, attrs, err); });
    }
};

// walk(Reading) takes what it needs from the document.
template <class Walk>
void read_document(const char* function, const char* mess_1, const Kind& kind, const std::string& text, Walk&& walk) {
    at_edge(function, [&] {
        MGErr err = error_of(function, mess_1);
        const MGLibxml xml(text.c_str(), 0);
        const xmlNode* root = xml.GetRoot();
        if_root_not_eq_name(err, xml.GetName(root), kind.root);
        if_mask_not_eq_value(err, xml.GetStringProp(root, "mark"), kind.mark, kind.mark_name, kind.words);
        walk(Reading{xml, root, xml.GetFirstChildren(root, "header"), err});
    });
}

// walk(Writing) puts in what stands below the root.
template <class Walk>
void write_document(const char* function, const Kind& kind, std::string& text, Walk&& walk) {
    at_edge(function, [&] {
        MGErr err = error_of(function, "Ошибка создания документа для передачи");
        MGLibxml xml;
        xmlNode* root = xml.AddDocRoot(kind.root);
        xml.SetTextProp(root, "mark", kind.mark);
        walk(Writing{xml, root, xml.AddChildToNode(root, "header"), err});
        xml.SaveString(text);
    });
}

} // namespace

// --- A file ---

namespace {

// The header of a file, whether it goes into a queue or not.
struct FileHeader {
    std::string que;
    std::string name;
    uint64_t size = 0;
    uint64_t buf_len = 0;
};

constexpr XmlAttr<FileHeader> que_attrs[] = {
    {"que", &FileHeader::que},
};
constexpr XmlAttr<FileHeader> file_attrs[] = {
    {"name", &FileHeader::name},
    {"size", &FileHeader::size},
    {"buf_len", &FileHeader::buf_len},
};

} // namespace

void write_file_header(const MGSend& send, uint64_t size, std::string& text) {
    write_document("write_file_header", file_header, text, [&](const Writing& way) {
        way.header(FileHeader{"", send.file, size, static_cast<uint64_t>(send.buf_len) * 1024}, file_attrs);
    });
}

void read_file_header(const std::string& text, MGRecvFile& file) {
    const auto walk = [&](const Reading& way) {
        FileHeader header;
        way.header(header, file_attrs);
        file.name = header.name;
        file.size = header.size;
        file.buf_len = header.buf_len;
        file.full_blocks = file.buf_len ? file.size / file.buf_len : 0;
        file.rest = file.buf_len ? file.size % file.buf_len : file.size;
    };
    read_document("read_file_header", "Ошибка загрузки заголовка передаваемого файла", file_header, text, walk);
}

void write_file_crc(uint32_t crc32, std::string& text) {
    write_document("write_file_crc", file_crc, text,
                   [&](const Writing& way) { way.xml.SetNumber64Prop(way.node, "crc32", crc32); });
}

void read_file_crc(const std::string& text, MGRecvFile& file) {
    read_document("read_file_crc", "Ошибка загрузки контрольной суммы", file_crc, text, [&](const Reading& way) {
        file.crc32 = static_cast<uint32_t>(way.xml.GetNumber64Prop(way.node, "crc32"));
    });
}

void write_file2_header(const std::string& que, const std::string& name, uint64_t size, uint64_t buf_len,
                        std::string& text) {
    write_document("write_file2_header", file2_header, text, [&](const Writing& way) {
        const FileHeader header{que, name, size, buf_len};
        way.header(header, que_attrs);
        way.header(header, file_attrs);
    });
}

void read_file2_header(const std::string& text, std::string& que, std::string& name, uint64_t& size,
                       uint64_t& buf_len) {
    const auto walk = [&](const Reading& way) {
        FileHeader header;
        way.header(header, que_attrs);
        way.header(header, file_attrs);
        que = header.que;
        name = header.name;
        size = header.size;
        buf_len = header.buf_len;
    };
    read_document("read_file2_header", "Ошибка загрузки заголовка передаваемого файла 2", file2_header, text, walk);
}

void test_data_crc(const std::vector<uint8_t>& data, uint32_t crc32) {
    at_edge("test_data_crc", [&] {
        const uint32_t test_crc32 = MGFile::MakeCrc32Ext(data);
        if (test_crc32 == crc32) return;
        MGErr err = error_of("test_data_crc", "Ошибка проверки контрольной суммы блока данных");
        err.num_param = test_crc32;
        err.uint32_param = crc32;
        fail(err, "Ошибка сравнения контрольных сумм", "(test_crc32 != crc32)");
    });
}

// --- Clients ---

namespace {

constexpr XmlAttr<MGDev> device_attrs[] = {
    {"device", &MGDev::device},
    {"is_router", &MGDev::is_router},
    {"is_local", &MGDev::is_local},
};
constexpr XmlAttr<MGDev> local_attrs[] = {
    {"local_adr", &MGDev::local_adr},
    {"virtual_adr", &MGDev::virtual_adr},
};
constexpr XmlAttr<MGListAdrs> internal_attrs[] = {
    {"ip", &MGListAdrs::ip},
    {"net", &MGListAdrs::net},
};
constexpr XmlAttr<MGListAdrs> virtual_attrs[] = {
    {"ip", &MGListAdrs::ip},
};

// Dev is const for writing. The modes, which decide what follows them, come first in either direction.
template <class Way, class Dev>
void walk_gw_client(const Way& way, Dev& dev) {
    way.header(dev, device_attrs);
    if (dev.is_local) way.header(dev, local_attrs);
    if (!dev.is_router) return;
    way.list("adrs", "adr", dev.adrs, internal_attrs);
    way.list("virt", "adr", dev.virt, virtual_attrs);
}

struct FileClient {
    std::string type;
    std::string login;
    std::string hash;
    std::vector<MGQueue> queue;
};

constexpr XmlAttr<FileClient> client_attrs[] = {
    {"type", &FileClient::type},
    {"login", &FileClient::login},
    {"hash", &FileClient::hash},
};
constexpr XmlAttr<MGQueue> queue_attrs[] = {
    {"id", &MGQueue::id, &MGQueue::crc_id},
};

template <class Way, class Client>
void walk_file_client(const Way& way, Client& client) {
    way.header(client, client_attrs);
    way.list("queue", "que", client.queue, queue_attrs);
}

} // namespace

void write_gw_client(const MGDev& dev, std::string& text) {
    write_document("write_gw_client", gw_client, text, [&](const Writing& way) { walk_gw_client(way, dev); });
}

void read_gw_client(const std::string& text, MGDev& dev) {
    read_document("read_gw_client", "Ошибка загрузки данных адресов клиентского щлюза", gw_client, text,
                  [&](const Reading& way) { walk_gw_client(way, dev); });
}

void write_file_client(const std::vector<MGQueue>& queue, const std::string& login, const std::string& hash,
                       const std::string& type, std::string& text) {
    write_document("write_file_client", file_client, text, [&](const Writing& way) {
        const FileClient client{type, login, hash, queue};
        walk_file_client(way, client);
    });
}

void read_file_client(const std::string& text, std::vector<MGQueue>& queue, std::string& login, std::string& hash,
                      std::string& type) {
    queue.clear();
    login.clear();
    hash.clear();
    type.clear();
    FileClient client;
    read_document("read_file_client", "Ошибка загрузки списка очередей на Файл-сервере", file_client, text,
                  [&](const Reading& way) { walk_file_client(way, client); });
    queue = std::move(client.queue);
    login = std::move(client.login);
    hash = std::move(client.hash);
    type = std::move(client.type);
}
