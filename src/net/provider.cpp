// The place of the provider's library, and its texts.
#include "net/provider.h"

#include "app/mg_err.h"

#include <iconv.h>
#include <memory>
#include <vector>

using namespace vorma;

std::string vorma::provider_library = "/opt/Selunara/KOLMS/lib/amd64/libqormi1.so";

namespace {

// output_size is the room for the result with its zero byte.
std::string convert(std::string text, const char* from, const char* to, size_t output_size) {
    const iconv_t failed = reinterpret_cast<iconv_t>(-1);
    const iconv_t opened = iconv_open(to, from);
    if (opened == failed) return "";
    const std::unique_ptr<void, decltype(&iconv_close)> descriptor(opened, &iconv_close);
    std::vector<char> output(output_size);
    char* in = text.data();
    char* out = output.data();
    size_t in_left = text.size() + 1;
    size_t out_left = output.size() - 1; // a conversion that fills it all still ends in a zero byte
    iconv(descriptor.get(), &in, &in_left, &out, &out_left);
    return output.data();
}

} // namespace

std::string Ansi1251toUtf8(std::string text) {
    const size_t output_size = text.size() * 4 + 12;
    return at_edge("Ansi1251toUtf8", [&] { return convert(std::move(text), "CP1251", "UTF-8", output_size); });
}

std::string Utf8toAnsi1251(std::string text) {
    const size_t output_size = text.size() + 9;
    return at_edge("Utf8toAnsi1251", [&] { return convert(std::move(text), "UTF-8", "CP1251", output_size); });
}
