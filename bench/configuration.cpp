// Times the store on a home of realistic profiles: bench_configuration HOME COUNT builds the catalog tree below HOME,
// saves COUNT profiles, so that reserve copies are made too, and holds loading beside libxml2's parsing of the same
// files, saving beside the same bytes written and copied with bare system calls, in HOME and in memory. The home stays
// for bench/startup.
#include "app/mg_context.h"
#include "app/mg_err.h"
#include "config/master_file.h"
#include "config/profile_file.h"
#include "config/tokens.h"

#include "compare.h"

#include <libxml/parser.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <limits>
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

// In milliseconds, the least of what several turns took.
struct Cost {
    double elapsed = std::numeric_limits<double>::max(), processor = elapsed;

    template <class Step>
    void take(Step&& step) {
        const auto begin = std::chrono::steady_clock::now();
        processor = std::min(processor, seconds(step) * 1e3);
        elapsed = std::min(elapsed,
                           std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
    }
};

void print_row(const std::string& name, double ours, double bare) {
    std::printf("| %-52s | %9.2f | %9.2f | %6.2f | %5.2f |\n", name.c_str(), ours, bare, ours / bare, 1.15);
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

// The processor time that making and serializing the documents of a save takes: a file that can't be opened is where
// it ends, and its error costs next to nothing.
double documents(MGContext context) {
    context.config_dir = "/proc/none";
    context.config_file = context.config_dir + "/vormaqs_config.xml";
    const auto failing = [](auto&& write) {
        try {
            write();
        } catch (const MGErr&) {
        }
    };
    Cost cost;
    for (int turn = 0; turn < 5; ++turn)
        cost.take([&] {
            failing([&] { write_config_file(&context); });
            for (size_t i = 0; i < context.profiles.size(); ++i)
                failing([&] { write_profile_file(&context, static_cast<int>(i)); });
        });
    return cost.processor;
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

// What was loaded is given back between the turns: it stays as long as the editor runs.
void compare_loading(const MGContext& context) {
    const std::vector<std::string> names = files(context);
    Cost ours, bare;
    for (int turn = 0; turn < 11; ++turn) {
        MGContext again;
        again.config_dir = context.config_dir;
        again.config_file = context.config_file;
        ours.take([&] { load(again); });
        bare.take([&] { parse(names); });
    }
    print_row("load of profiles / libxml2 parses the same files", ours.processor, bare.processor);
}

// A whole save beside the bare calls for the same bytes. What it costs beyond them goes into the making of the
// documents, which libxml2 does for the most part, and into looking at each file before it is written.
void compare_saving(MGContext& context, const std::string& where) {
    const std::vector<std::string> names = files(context);
    Cost ours, bare;
    for (int turn = 0; turn < 5; ++turn) {
        ours.take([&] { save(context); });
        bare.take([&] { std::for_each(names.begin(), names.end(), write_bare); });
    }
    print_row("save in " + where + " / bare calls, elapsed", ours.elapsed, bare.elapsed);
    print_row("save in " + where + " / bare calls, processor", ours.processor, bare.processor);
    print_row("save in " + where + " less its documents, processor", ours.processor - documents(context),
              bare.processor);
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
        compare_loading(context);
        compare_saving(context, "disk");
        char folder[] = "/dev/shm/vorma-bench-XXXXXX";
        if (!mkdtemp(folder)) give_up(folder);
        context.config_dir = folder;
        context.config_file = context.config_dir + "/vormaqs_config.xml";
        save(context);
        compare_saving(context, "memory");
        std::filesystem::remove_all(folder);
    } catch (const MGErr& err) {
        std::fprintf(stderr, "%s", err.GetString().c_str());
        return 1;
    }
}
