// The address lists of a gateway: the four of them, what an address must be in each kind, and what is handed over.
#include "lists/lists_fixture.h"

namespace {

using Rows = std::vector<std::string>;
using Addresses = std::vector<MGListAdrs>;

constexpr const char* exactly_one = "Нужно указать IP адрес или доменное имя или подсеть";

struct AddressList {
    const char* opener;
    MGDev MGConfig::*side;
    Addresses MGDev::*list;
    bool is_virtual;
};
const AddressList lists[] = {
    {"button_gw_client_list_adrs", &MGConfig::gw_client, &MGDev::adrs, false},
    {"button_gw_server_list_adrs", &MGConfig::gw_server, &MGDev::adrs, false},
    {"button_gw_client_list_virtual", &MGConfig::gw_client, &MGDev::virt, true},
    {"button_gw_server_list_virtual", &MGConfig::gw_server, &MGDev::virt, true},
};

// What is refused of a new address, by kind, and how the next press of OK mends it. The last one is accepted.
const std::vector<Check> checks[] = {
    {{"entry_address_ip= ", exactly_one, "entry_address_ip"},
     {"entry_address_net=10.0.0.1/24", "Необходимо задать подсеть в формате NNN.NNN.NNN.0/24", "entry_address_net"},
     {"entry_address_domen=любое имя", exactly_one, "entry_address_ip"},
     {"entry_address_net=;entry_address_ip=10.1.1.1", exactly_one, "entry_address_ip"},
     {"entry_address_domen=;entry_address_ip=10.1.1.1/24", "Необходимо задать IP адрес в формате NNN.NNN.NNN.NNN",
      "entry_address_ip"},
     {"entry_address_ip=;entry_address_net=10.1.1.0/24;entry_address_name=имя"}},
    {{"entry_address_name=имя", exactly_one, "entry_address_ip"},
     {"entry_address_ip=10.1.1.1", "Необходимо задать IP адрес и подсеть в формате NNN.NNN.NNN.NNN/24",
      "entry_address_ip"},
     {"entry_address_ip=10.1.1.0/24"}},
};

void expect_kind(UiWindow window, bool is_virtual) {
    EXPECT_EQ(window.label("label_address_ip"), is_virtual ? "xxx.xxx.xxx.xxx/nn" : " ");
    EXPECT_EQ(window.combo_rows("combo_address_ip"), is_virtual ? init_virtual_ip : init_recv_ip);
    EXPECT_EQ(window.combo_rows("combo_address_domen"), is_virtual ? History{} : init_recv_domen);
    EXPECT_EQ(window.combo_rows("combo_address_net"), is_virtual ? History{} : init_sub_net);
    for (const char* id : {"combo_address_domen", "entry_address_domen", "combo_address_net", "entry_address_net"})
        EXPECT_EQ(window.sensitive(id), !is_virtual) << id;
}

class AddressListTest : public ListsTest {};

TEST_F(AddressListTest, EditsTheListOfItsButtonAndHandsItOverOnOk) {
    init_recv_ip = {"0.0.0.0"};
    init_recv_domen = {"a.example"};
    init_sub_net = {"10.0.0.0/24"};
    init_virtual_ip = {"10.9.0.1/16"};
    const MGListAdrs old = {"10.0.0.1", "b.example", "10.0.0.0/24", "старый"};
    for (const AddressList& list : lists) config.*list.side.*list.list = {old, {"", "c.example", "", ""}};
    for (const AddressList& list : lists) {
        for (const char* answer : {"button_adrs_cancel", "button_adrs_ok"}) {
            SCOPED_TRACE(std::string(list.opener) + " " + answer);
            MGConfig expected = config;
            if (answer == std::string("button_adrs_ok"))
                expected.*list.side.*list.list =
                    list.is_virtual // what such a list does not show stays as it was
                        ? Addresses{{"10.0.0.1/8", "b.example", "10.0.0.0/24", "новый"}, {"10.1.1.0/24", "", "", "имя"}}
                        : Addresses{{"", "b.example", "", "новый"}, {"", "", "10.1.1.0/24", "имя"}};
            script.when("dialog_adrs", [&](UiWindow window) {
                EXPECT_EQ(window.title(), list.is_virtual ? "Список виртуальных адресов" : "Список внутренних адресов");
                EXPECT_EQ(column_titles(window, "adrs_view"), "[v]|IP адрес|Доменное имя|Подсеть|Наименование");
                EXPECT_EQ(rows_of(window, "adrs_view"),
                          list.is_virtual ? (Rows{"0|10.0.0.1|||старый", "0||||"})
                                          : (Rows{"0|10.0.0.1|b.example|10.0.0.0/24|старый", "0||c.example||"}));
                script.remark("Удаляемые записи нужно отметить в колонке [v]");
                window.click("button_adrs_delete"); // whatever is selected
                window.click("button_adrs_select_all");
                window.toggle_cell("adrs_view", 0);

                script.when("dialog_address", [&](UiWindow record) {
                    EXPECT_EQ(record.title(), "Добавление адреса");
                    expect_kind(record, list.is_virtual);
                    record.click("button_address_cancel");
                });
                window.click("button_adrs_add");
                expect_checks(script, "dialog_address", "button_address_ok", checks[list.is_virtual]);
                window.click("button_adrs_add");
                EXPECT_EQ(marks(window, "adrs_view"), "010");

                window.select("adrs_view", {});
                window.click("button_adrs_rename"); // one is marked, but none is selected
                window.select("adrs_view", {0});
                script.when("dialog_address", [&](UiWindow record) {
                    EXPECT_EQ(record.title(), "Изменение данных пользователя");
                    expect_kind(record, list.is_virtual);
                    EXPECT_EQ(record.entry("entry_address_ip"), "10.0.0.1");
                    EXPECT_EQ(record.entry("entry_address_net"), list.is_virtual ? "" : "10.0.0.0/24");
                    enter(record, list.is_virtual ? "entry_address_ip=10.0.0.1/8;entry_address_name=новый"
                                                  : "entry_address_ip=;entry_address_net=;entry_address_name=новый");
                    record.click("button_address_ok");
                });
                window.click("button_adrs_rename");

                constexpr const char* question = "Вы действительно хотите удалить (1) записей из списка?";
                script.question(question, GTK_RESPONSE_NO).question(question, GTK_RESPONSE_YES);
                window.click("button_adrs_delete");
                window.click("button_adrs_delete");
                EXPECT_EQ(rows_of(window, "adrs_view"), list.is_virtual
                                                            ? (Rows{"0|10.0.0.1/8|||новый", "0|10.1.1.0/24|||имя"})
                                                            : (Rows{"0||b.example||новый", "0|||10.1.1.0/24|имя"}));
                window.click(answer);
            });
            open(list.opener);
            EXPECT_TRUE(config == expected);
        }
    }
    EXPECT_EQ(init_recv_ip, History{"0.0.0.0"});
    EXPECT_EQ(init_recv_domen, (History{"a.example", "b.example"}));
    EXPECT_EQ(init_sub_net, (History{"10.0.0.0/24", "10.1.1.0/24"}));
    EXPECT_EQ(init_virtual_ip, (History{"10.9.0.1/16", "10.1.1.0/24", "10.0.0.1/8"}));
}

} // namespace
