// The place of the provider's library, and its texts.
#include "net/provider.h"

#include <iconv.h>
#include <memory>
#include <vector>

std::string provider_library = "/opt/Selunara/KOLMS/lib/amd64/libqormi1.so";

std::string Ansi1251toUtf8(std::string text) {
    const iconv_t failed = reinterpret_cast<iconv_t>(-1);
    const iconv_t opened = iconv_open("UTF-8", "CP1251");
    if (opened == failed) return "";
    const std::unique_ptr<void, decltype(&iconv_close)> descriptor(opened, &iconv_close);
    std::vector<char> output(text.size() * 4 + 12);
    char* in = text.data();
    char* out = output.data();
    size_t in_left = text.size() + 1;
    size_t out_left = output.size();
    iconv(descriptor.get(), &in, &in_left, &out, &out_left);
    return output.data();
}
