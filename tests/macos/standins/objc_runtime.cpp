// The functions of the Objective-C runtime that compiled code calls. Selectors are the plain C
// strings that the compiler wrote, since nothing here replaces them while a program is loaded.
#include "macos/standins/objects.h"
#include "macos/standins/workspace.h"

namespace callmonitor::standins {
namespace {

double noNumber() {
  return 0;
}

const void* nothing() {
  return nullptr;
}

}  // namespace
}  // namespace callmonitor::standins

using namespace callmonitor::standins;

extern "C" {

// Called by objc_msgSend below with its first two arguments. A message to nil answers 0.
AnyMethod standinMethod(const void* receiver, const char* selector) {
  if (receiver != nullptr) return methodOf(used(receiver), selector);
  if (std::string_view(selector) == "timeIntervalSince1970") {
    return reinterpret_cast<AnyMethod>(noNumber);
  }
  return reinterpret_cast<AnyMethod>(nothing);
}

// Has the type of whatever method it goes on to, so it must leave all arguments where they are.
#if defined(__x86_64__)
__asm__(R"(
  .text
  .globl objc_msgSend
  .type objc_msgSend, @function
objc_msgSend:
  pushq %rbp
  movq %rsp, %rbp
  pushq %rdi
  pushq %rsi
  pushq %rdx
  pushq %rcx
  pushq %r8
  pushq %r9
  call standinMethod@PLT
  popq %r9
  popq %r8
  popq %rcx
  popq %rdx
  popq %rsi
  popq %rdi
  popq %rbp
  jmp *%rax
  .size objc_msgSend, . - objc_msgSend
)");
#elif defined(__aarch64__)
__asm__(R"(
  .text
  .globl objc_msgSend
  .type objc_msgSend, %function
objc_msgSend:
  stp x29, x30, [sp, #-80]!
  mov x29, sp
  stp x0, x1, [sp, #16]
  stp x2, x3, [sp, #32]
  stp x4, x5, [sp, #48]
  stp x6, x7, [sp, #64]
  bl standinMethod
  mov x16, x0
  ldp x0, x1, [sp, #16]
  ldp x2, x3, [sp, #32]
  ldp x4, x5, [sp, #48]
  ldp x6, x7, [sp, #64]
  ldp x29, x30, [sp], #80
  br x16
  .size objc_msgSend, . - objc_msgSend
)");
#else
#error "messages can be sent on x86-64 and AArch64 only"
#endif

const void* objc_retain(const void* object) {
  return object == nullptr ? nullptr : CFRetain(object);
}

void objc_release(const void* object) {
  if (object != nullptr) CFRelease(object);
}

const void* objc_retainAutoreleasedReturnValue(const void* object) {
  return objc_retain(object);
}

void objc_storeStrong(const void** place, const void* object) {
  const void* old = *place;
  *place = objc_retain(object);
  objc_release(old);
}

void* objc_autoreleasePoolPush() {
  return openPool();
}

void objc_autoreleasePoolPop(void* pool) {
  closePool(pool);
}

void objc_enumerationMutation(const void*) {
  refuse("a list changed while it was gone through");
}

}  // extern "C"
