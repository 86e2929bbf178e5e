// The errors of the checks.
#include "config/file_checks.h"

using namespace vorma;

void if_counter_eq_quantity_throw_err(MGErr& err, int counter, int quantity, const char* name) {
    if (counter != quantity) return;
    err.str_param = "quantity";
    err.ext_param = name;
    err.num_param = counter;
    fail(err, "Количество правил для входящих сообщений в XML файле превышает значение, заданное в атрибуте",
         "counter == quantity");
}

void if_counter_not_eq_quantity_throw_err(MGErr& err, int counter, int quantity, const char* name) {
    if (counter == quantity) return;
    err.str_param = "quantity";
    err.ext_param = name;
    err.num_param = quantity;
    fail(err, "Количество правил для входящих сообщений в XML файле меньше, чем значение, заданное в атрибуте",
         "counter != quantity");
}

void if_root_not_eq_name(MGErr& err, const std::string& root, const char* name) {
    if (root == name) return;
    err.str_param = name;
    fail(err, "В XML файле не найден корневой узел", "GetRoot");
}

void if_version_not_eq_value(MGErr& err, int num, int version, const char* name) {
    if (num == version) return;
    err.str_param = name;
    err.ext_param = "version";
    err.num_param = num;
    fail(err, "Версия файла конфигурации не совпадает с версией файла профиля", "num != version");
}

void if_release_not_eq_value(MGErr& err, int num, int release, const char* name) {
    if (num == release) return;
    err.str_param = name;
    err.ext_param = "release";
    err.num_param = num;
    fail(err, "Сборка файла конфигурации не совпадает со сборкой файла профиля", "num != release");
}

void if_id_not_eq_value(MGErr& err, const std::string& str, const std::string& id) {
    if (str == id) return;
    err.str_param = str;
    err.ext_param = id;
    fail(err, "Идентификатор профиля не совпадает с именем файла", "str != id");
}

void if_mask_not_eq_value(MGErr& err, const std::string& str, const char* value, const char* name, const char* kind) {
    if (str == value) return;
    const std::string mess_2 = err.mess_2 + "XML файл не является конфигурационным файлом " + kind;
    const std::string func_2 = err.func_2 + "str != " + name;
    err.str_param = str;
    err.ext_param = value;
    fail(err, mess_2.c_str(), func_2.c_str());
}
