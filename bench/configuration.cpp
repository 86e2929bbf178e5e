// Times the store on a home of realistic profiles: bench_configuration HOME COUNT builds the catalog tree below HOME,
// saves COUNT profiles twice (the second save makes the reserve copies), reads them back and prints the times and the
// peak of memory. The home stays for bench/startup.
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>

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

void load(MGContext& context) {
    read_config_file(&context);
    for (size_t i = 0; i < context.profiles.size(); ++i) read_profile_file(&context, static_cast<int>(i));
}

template <class Step>
void timed(const char* name, Step step) {
    const auto begin = std::chrono::steady_clock::now();
    step();
    const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - begin;
    std::printf("%-12s %9.1f ms\n", name, passed.count());
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

        timed("first save", [&] { save(context); });
        timed("save", [&] { save(context); });
        MGContext again = context;
        again.profiles.clear();
        timed("load", [&] { load(again); });

        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        std::printf("%-12s %9ld KiB\n", "peak memory", usage.ru_maxrss);
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
