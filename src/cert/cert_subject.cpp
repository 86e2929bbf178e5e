// The subject of a certificate, in one call that throws.
#include "app/mg_err.h"
#include "cert/mg_cert.h"
#include "runtime/mg_file.h"

#include <algorithm>

using namespace vorma;

namespace {

constexpr int64_t most_bytes = 1 << 20; // of a certificate's file; what is larger is not even read

} // namespace

std::string get_subject_from_der_cert(const std::vector<uint8_t>& bytes) {
    return at_edge("get_subject_from_der_cert", [&] {
        MGErr err = error_of("get_subject_from_der_cert",
                             "Ошибка получения имени владельца сертификата из сертификата в der кодировке");

        // A longer input than a length can say is refused by its length.
        MGCert cert(bytes.data(), static_cast<uint32_t>(std::min<size_t>(bytes.size(), UINT32_MAX)));
        if (const uint32_t code = cert.ParsCert()) {
            err.uint32_param = code;
            err.err_description = MGCert::Error2String(code);
            fail(err, "Не получилось разобрать формат сертификата", "cert->ParsCert()");
        }
        std::string_view subject;
        if (!cert.GetSubjectFullName(subject))
            fail(err, "В сертификате отсутствует имя владельца", "cert->GetSubjectFullName()");
        return std::string(subject);
    });
}

std::string get_subject_from_parsed_cert(std::string file_name) {
    return at_edge("get_subject_from_parsed_cert", [&] {
        MGErr err = error_of("get_subject_from_parsed_cert",
                             "Ошибка получения имени владельца сертификата из сертификата в der кодировке");
        err.str_param = file_name;
        err.num_param = MGFile::SizeFile(file_name.c_str());
        if (err.num_param > most_bytes) fail(err, "Файл слишком велик для сертификата", "size > 1048576");
        std::vector<uint8_t> bytes;
        MGFile::ReadFileVector(file_name, bytes);
        return get_subject_from_der_cert(bytes);
    });
}
