#include "app/mg_err.h"
#include "support/error_of.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

MGErr full_error() {
    MGErr err;
    std::string MGErr::*const texts[] = {
        &MGErr::mess_1,    &MGErr::mess_2,    &MGErr::func_1,      &MGErr::func_2,      &MGErr::str_param,
        &MGErr::opt_param, &MGErr::ext_param, &MGErr::ext_2_param, &MGErr::ext_3_param, &MGErr::err_description};
    for (size_t i = 0; i < std::size(texts); ++i) err.*texts[i] = static_cast<char>('a' + i);
    err.num_param = -1;
    err.num_2_param = 2;
    err.num_3_param = 3;
    err.uint32_param = 255;
    err.uint32_2_param = 4294967295U;
    err.err_code = -2;
    return err;
}

TEST(MGErr, TextHoldsWhatIsSetInItsOrder) {
    EXPECT_EQ(MGErr().GetString(), "");
    EXPECT_EQ(full_error().GetString(),
              "a\nb\nc\nd\ne\nf\ng\nh\ni\n18446744073709551615\n2\n3\n255 [0x000000FF]\n-1 [0xFFFFFFFF]\n-2\nj\n");
    EXPECT_EQ(full_error().GetTextString(), "a\nb\n");
}

TEST(Edge, TurnsForeignExceptionsIntoErrors) {
    const auto text_at_edge = [](auto body) { return error_of([&] { at_edge("MGFile::X", body); }).GetString(); };
    EXPECT_EQ(text_at_edge([] { throw std::bad_alloc(); }),
              "Непонятная ошибка\nИсключение библиотеки STD\nMGFile::X\nstd::bad_alloc\n");
    EXPECT_EQ(text_at_edge([] { throw 1; }), "Непонятная ошибка\nЛюбое исключение\nMGFile::X\n");
    EXPECT_THROW(at_edge("X", [] { throw MGExit(-7); }), MGExit);
}

} // namespace
