// The provider's TLS session.
#include "app/mg_err.h"
#include "net/mg_trelm.h"
#include "net/provider_owners.h"

using namespace vorma;

namespace {

// One operation on the session: what its errors say.
struct Operation {
    const char* func_1;
    const char* mess_1;
    const char* mess_2;
    const char* func_2;
};

constexpr Operation create = {"MGTrelm::TlsCreate", "Ошибка создания TLS контекста",
                              "Ошибка функции получения TLS контекста", "TRELM_TlsSessionCreate"};
constexpr Operation destroy = {"MGTrelm::TlsDestroy", "Ошибка создания TLS контекста",
                               "Ошибка функции удаления TLS контекста", "TRELM_TlsSessionDestroy"};
constexpr Operation handshake = {"MGTrelm::TlsHandshake", "Ошибка TLS аутентификации",
                                 "Ошибка функции TLS аутентификации", "TRELM_TlsSessionHandshake"};
constexpr Operation complete = {"MGTrelm::TlsComplete", "Ошибка проверки завершения TLS аутентификации",
                                "Ошибка функции проверки завершения TLS аутентификации", "TRELM_TlsSessionComplete"};
constexpr Operation query = {"MGTrelm::TlsQuery", "Ошибка получения данных TLS аутентификации",
                             "Ошибка функции получения данных TLS аутентификации", "TRELM_TlsSessionQuery"};
constexpr Operation tls_write = {"MGTrelm::TlsWrite", "Ошибка зашифрования данных TLS",
                                 "Ошибка функции зашифрования данных TLS", "TRELM_TlsSessionWrite"};
constexpr Operation tls_read = {"MGTrelm::TlsRead", "Ошибка расшифрования данных TLS",
                                "Ошибка функции расшифрования данных TLS", "TRELM_TlsSessionRead"};

constexpr uint32_t tls_failure = 0xf42d327d; // err_code of all errors here

// What a new session is to be; the provider gives the numbers their meaning.
constexpr uint32_t client_flags = 1, client_option_flags = 65, server_flags = 20, server_option_flags = 24;

MGErr tls_error(const Operation& operation) {
    MGErr err = error_of(operation.func_1, operation.mess_1);
    err.err_code = static_cast<int32_t>(tls_failure);
    return err;
}

void throw_if(MGTrelm& trelm, uint32_t code, MGErr& err, const Operation& operation) {
    trelm.IfError(code, err, operation.mess_2, operation.func_2);
}

// Bytes in, bytes out.
void transfer(MGTrelm& trelm, const Operation& operation,
              decltype(trelm_functions::TlsSessionWrite) trelm_functions::*function, const std::vector<uint8_t>& input,
              std::vector<uint8_t>& output) {
    MGErr err = tls_error(operation);
    trelm.IfErrSession(err);
    mem_blk in;
    trelm.fill_mem_blk_from_data(in, input);
    ProviderBlock out(trelm.functions.FreeMem, trelm.context);
    throw_if(trelm, (trelm.functions.*function)(trelm.context, trelm.session, &in, &out.block), err, operation);
    trelm.copy_mem_blk_to_data(out.block, output);
}

} // namespace

void MGTrelm::TlsCreate(const std::string& name, bool client_option, bool server_option) {
    at_edge(create.func_1, [&] {
        MGErr err = tls_error(create);
        IfErrContext(err);
        TlsDestroy();
        position = {};
        const bool client = !name.empty();
        const uint32_t flags = client ? (client_option ? client_option_flags : client_flags)
                                      : (server_option ? server_option_flags : server_flags);
        throw_if(*this, functions.TlsSessionCreate(context, client ? name.c_str() : nullptr, &session, flags), err,
                 create);
    });
}

void MGTrelm::TlsDestroy() {
    at_edge(destroy.func_1, [&] {
        if (!session) return;
        MGErr err = tls_error(destroy);
        const uint32_t code = functions.TlsSessionDestroy(context, session);
        session = nullptr;
        throw_if(*this, code, err, destroy);
    });
}

void MGTrelm::TlsHandshake(const std::vector<uint8_t>& input, std::vector<uint8_t>& output) {
    at_edge(handshake.func_1,
            [&] { transfer(*this, handshake, &trelm_functions::TlsSessionHandshake, input, output); });
}

bool MGTrelm::TlsComplete() {
    return at_edge(complete.func_1, [&] {
        MGErr err = tls_error(complete);
        IfErrSession(err);
        const uint32_t code = functions.TlsSessionComplete(context, session);
        if (code == trelm_handshake_goes_on) return false;
        throw_if(*this, code, err, complete);
        return true;
    });
}

void MGTrelm::TlsQuery(uint32_t what, std::vector<uint8_t>& output) {
    at_edge(query.func_1, [&] {
        MGErr err = tls_error(query);
        IfErrSession(err);
        ProviderBlock out(functions.FreeMem, context);
        throw_if(*this, functions.TlsSessionQuery(context, session, what, &out.block), err, query);
        copy_mem_blk_to_data(out.block, output);
    });
}

void MGTrelm::TlsWrite(const std::vector<uint8_t>& input, std::vector<uint8_t>& output) {
    at_edge(tls_write.func_1, [&] { transfer(*this, tls_write, &trelm_functions::TlsSessionWrite, input, output); });
}

bool MGTrelm::TlsRead(const std::vector<uint8_t>& input, std::vector<uint8_t>& output, bool append) {
    return at_edge(tls_read.func_1, [&] {
        MGErr err = tls_error(tls_read);
        IfErrSession(err);
        mem_blk in;
        fill_mem_blk_from_data(in, input);
        ProviderBlock out(functions.FreeMem, context);
        const uint32_t code = functions.TlsSessionRead(context, session, &in, &out.block);
        if (code == trelm_more_input) return false;
        throw_if(*this, code, err, tls_read);
        if (append)
            copy_mem_blk_add_to_data(out.block, output);
        else
            copy_mem_blk_to_data(out.block, output);
        return true;
    });
}
