// Times the store on a home of realistic profiles: bench_configuration HOME COUNT builds the catalog tree below HOME,
// saves COUNT profiles, so that reserve copies are made too, and holds loading beside libxml2's parsing of the same
// files, saving beside the same bytes written and copied with bare system calls. The home stays for bench/startup.
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"

#include "compare.h"

#include <libxml/parser.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// A nightly backup with ten actions, a dozen admitted users, four queues and three clients.
MGProfile realistic_profile(int number) {
    const std::string tail = std::to_string(number);
    MGProfile profile;
    profile.name = "Ночное копирование базы данных филиала " + tail;
    profile.id = "branch_" + tail;
    profile.active = number % 2;
    MGConfig& config = profile.config;
    config.log_catalog = "/var/log/backup/" + profile.id;
    config.recv_ip = "10.0." + std::to_string(number / 250) + "." + std::to_string(number % 250);
    config.mode_same_file = "ADD_NUM";
    config.ticket_type = "XML";
    for (int i = 0; i < 10; ++i) {
        MGAction action;
        action.active = true;
        action.type = action_types[i % 5].token;
        action.name = "Шаг " + std::to_string(i) + " профиля " + tail;
        action.console.prog = "/usr/bin/pg_dump -U backup -W %%PASSWORD%% base_" + tail;
        action.console.use_hash = true;
        action.console.hash = "secret-" + tail;
        action.copy.catalog = "/srv/dump";
        action.copy.file = "base_" + tail + ".sql.gz";
        action.copy.catalog_to = "/srv/archive/" + tail;
        config.actions.push_back(action);
    }
    for (int i = 0; i < 12; ++i) {
        MGAdmit user;
        user.subject = "C=RU,S=77 г. Москва,L=Москва,O=Предприятие " + tail + ",OU=Отдел " + std::to_string(i) +
                       ",CN=Иванов Иван Иванович";
        config.admit.push_back(user);
    }
    const MGQueue queue{.id = "queue_" + tail,
                        .in_dir = "/srv/in/" + tail,
                        .out_dir = "/srv/out/" + tail,
                        .ticket_dir = "/srv/ticket/" + tail};
    config.fc_queue.assign(4, queue);
    MGAllow client;
    client.name = "Клиент " + tail;
    client.login = "client_" + tail;
    client.hash = "password-" + tail;
    client.admit.assign(2, config.admit.front());
    client.queue.assign(2, queue);
    config.fs_allow.assign(3, client);
    return profile;
}

void save(MGContext& context) {
    write_config_file(&context);
    for (size_t i = 0; i < context.profiles.size(); ++i) write_profile_file(&context, static_cast<int>(i));
}

// Saved into memory for the first time, so that little but the making of the documents is left.
void make_documents(MGContext context) {
    char folder[] = "/dev/shm/vorma-bench-XXXXXX";
    if (!mkdtemp(folder)) give_up(folder);
    context.config_dir = folder;
    context.config_file = context.config_dir + "/vormaqs_config.xml";
    save(context);
    std::filesystem::remove_all(folder);
}

template <class Step>
double elapsed(Step&& step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

void load(MGContext& context) {
    read_config_file(&context);
    for (size_t i = 0; i < context.profiles.size(); ++i) read_profile_file(&context, static_cast<int>(i));
}

std::vector<std::string> files(const MGContext& context) {
    std::vector<std::string> names = {context.config_file};
    for (const MGProfile& profile : context.profiles) names.push_back(profile_file_name(context, profile));
    return names;
}

void parse(const std::vector<std::string>& names) {
    for (const std::string& name : names) xmlFreeDoc(xmlReadFile(name.c_str(), nullptr, 0));
}

// What a save does to a file: its content into the reserve copy, which is cut first, and other content over it.
void write_bare(const std::string& name) {
    const int fd = open(name.c_str(), O_RDWR | O_CLOEXEC);
    const int copy = open((name + "~").c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, 0664);
    std::string content(static_cast<size_t>(lseek(fd, 0, SEEK_END)), 0);
    const auto size = static_cast<ssize_t>(content.size());
    if (pread(fd, content.data(), content.size(), 0) != size || write(copy, content.data(), content.size()) != size ||
        pwrite(fd, content.data(), content.size(), 0) != size)
        give_up(name.c_str());
    close(copy);
    close(fd);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_configuration HOME COUNT\n");
        return 2;
    }
    try {
        setenv("HOME", argv[1], 1);
        MGContext context;
        init_vorma_catalogs(&context, "bench.log");
        find_config_file(&context);
        for (int i = 0; i < std::atoi(argv[2]); ++i) context.profiles.push_back(realistic_profile(i));
        save(context);
        const std::vector<std::string> names = files(context);

        const auto load_all = [&] {
            MGContext again;
            again.config_dir = context.config_dir;
            again.config_file = context.config_file;
            load(again);
        };
        compare("load of profiles / libxml2 parses the same files", 1.15, load_all, [&] { parse(names); });

        // Elapsed time, which is what a disk costs. The rest of a save is the making of its documents.
        const double bare = elapsed([&] { std::for_each(names.begin(), names.end(), write_bare); });
        const double whole = elapsed([&] { save(context); });
        const double documents = elapsed([&] { make_documents(context); });
        std::printf("| %-52s | %9.2f | %9.2f | %6.2f | %5.2f |\n", "save less its documents / bare writes and copies",
                    whole - documents, bare, (whole - documents) / bare, 1.15);
        std::printf("| %-52s | %9.2f | %9s | %6s | %5s |\n", "the documents of a save", documents, "", "", "");
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
