#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>

#include "tests/support/small_stack.h"

namespace velmora {
namespace {

constexpr size_t kStackBytes = size_t{256} * 1024;

void* RunWork(void* work) {
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

}  // namespace

void RunOnSmallStack(const std::function<void()>& work) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
    pthread_t thread;
    std::function<void()> copy = work;
    ASSERT_EQ(pthread_create(&thread, &attributes, RunWork, &copy), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

}  // namespace velmora
