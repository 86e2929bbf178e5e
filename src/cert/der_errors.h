// The result codes of the DER reader and of MGCert, and their texts. Any thread may call these.
#pragma once

#include <cstdint>

// Every error once: name, code, text for the user.
#define DER_ERRORS(ERROR)                                                                                              \
    ERROR(der_value_too_long, 0xeeee0001, "Ошибка формата длины 1")                                                    \
    ERROR(der_indefinite_length, 0xeeee0002, "Обнаружена нулевая длина")                                               \
    ERROR(der_length_above_4_bytes, 0xeeee0003, "Длина превосходит 4 байта")                                           \
    ERROR(der_length_cut, 0xeeee0004, "Ошибка формата длины 2")                                                        \
    ERROR(der_empty_bit_string, 0xeeee0005, "Ошибка формата длины 3")                                                  \
    ERROR(der_bit_shift_above_7, 0xeeee0006, "Сдвиг в формате битовой строки превосходит 7")                           \
    ERROR(der_empty_oid, 0xeeee0007, "Идентификатор имеет нулевой размер")                                             \
    ERROR(der_bad_oid, 0xeeee0008, "Ошибка в формате идентификатора")                                                  \
    ERROR(der_utc_time_size, 0xeeee0009, "Ошибка размера UTC времени")                                                 \
    ERROR(der_utc_time_format, 0xeeee000a, "Ошибка формата UTC времени")                                               \
    ERROR(der_issuer_length, 0xeeee000b, "Ошибка длины имени издателя")                                                \
    ERROR(der_no_string, 0xeeee000c, "Ошибка получения строки")                                                        \
    ERROR(der_end_not_utc_time, 0xeeee000d, "Нет даты завершения действия")                                            \
    ERROR(der_subject_length, 0xeeee000e, "Ошибка длины имени владельца")                                              \
    ERROR(der_key_usage_size, 0xeeee000f, "Ошибка размера атрибута использования ключа")                               \
    ERROR(der_bad_first_sequence, 0xeeee0010, "Ошибка формата первой последовательности")                              \
    ERROR(der_bad_second_sequence, 0xeeee0011, "Ошибка формата второй последовательности")                             \
    ERROR(der_input_length, 0xeeee0012, "Ошибка длины")                                                                \
    ERROR(der_signed_length, 0xeeee0013, "Ошибка длины подписанных данных")                                            \
    ERROR(der_sign_bit_shift, 0xeeee0014, "Не нулевой битовый сдвиг в формате подписи")                                \
    ERROR(der_no_first_sequence, 0xeeee0015, "В отсутствует первая последовательность")                                \
    ERROR(der_no_second_sequence, 0xeeee0016, "В отсутствует вторая последовательность")                               \
    ERROR(der_no_sign, 0xeeee0017, "Отсутствует подпись")                                                              \
    ERROR(der_no_signed_data, 0xeeee0018, "Не были найдены подписанные данные")                                        \
    ERROR(der_skip_too_long, 0xeeee0019, "Ошибка формата длины 4")                                                     \
    ERROR(der_skip_not_constructed, 0xeeee001a, "Ошибка типа при пропуске данных")                                     \
    ERROR(der_no_end_time, 0xeeee001b, "Отсутствует дата завершения действия")                                         \
    ERROR(der_no_public_key, 0xeeee001c, "Отсутствует открытый ключ")                                                  \
    ERROR(der_nothing_after_oid, 0xeeee001d, "Отсутствует расширение 1 после идентификатора")                          \
    ERROR(der_nothing_after_critical, 0xeeee001e, "Отсутствует расширение 2 после идентификатора")                     \
    ERROR(der_no_extension_value, 0xeeee001f, "В расширении отсутствуют байтовые данные")                              \
    ERROR(der_unknown_kind, 0xeeee0020, "Ошибка задания имени параметра")                                              \
    ERROR(der_key_period_size, 0xeeee0021, "Ошибка размера времени действия ключа")                                    \
    ERROR(der_envelope_length, 0xeeee0022, "Ошибка длины подписанного запроса")                                        \
    ERROR(der_no_envelope_type, 0xeeee0023, "В подписанном запросе отсутствует идентификатор подписанных данных")      \
    ERROR(der_other_envelope_type, 0xeeee0024,                                                                         \
          "Идентификатор в подписанном запросе не соответствует идентификатору подписанных данных")                    \
    ERROR(der_no_envelope_data, 0xeeee0025, "В подписанном запросе отсутсвуют данные")                                 \
    ERROR(der_no_request_in_envelope, 0xeeee0026, "Данные запроса не найдены в подписанном запросе")                   \
    ERROR(der_no_request, 0xeeee0027, "Данные запроса отсутствуют")                                                    \
    ERROR(der_request_length, 0xeeee0028, "Ошибка длины запроса")                                                      \
    ERROR(der_no_signing_time, 0xeeee0029, "Отсутствует дата подписи")                                                 \
    ERROR(der_no_request_extensions, 0xeeee002a, "Отсутствует расширение запроса")                                     \
    ERROR(der_no_link_section, 0xeeee002b, "Отсутствует раздел [4] в ссылке на предыдущий сертификат")                 \
    ERROR(der_no_link_issuer, 0xeeee002c, "Отсутствует издатель в ссылке на предыдущий сертификат")

enum DerCode : uint32_t {
    der_ok = 0,
    der_end = 1, // end of the data when walking, "this item finished the job" from get_der_param
#define DER_CODE(name, code, text) name = code,
    DER_ERRORS(DER_CODE)
#undef DER_CODE
};

// The text of an error; "Нет описания этой ошибки" for any other number.
const char* err2str(uint32_t code);
