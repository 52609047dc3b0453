// The String conversions of the Ruby bridge inside an embedded interpreter: arbitrary byte
// strings, code-point arrays and encodings. Each answer is compared with what the
// interpreter itself says about the same text (String#codepoints, valid_encoding?).
//
// Leaks: LeakSanitizer is off, as the interpreter keeps its heap to the end. The one
// allocation the conversions make is value_to_wc_str's wide array (new[]), so the array
// forms of new and delete count here, and every input checks that the count is back where
// it started: after the caller's delete[] on success, with nothing to delete on a raise.

#include <ruby.h>
#include <ruby/encoding.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>
#include <string>
#include <vector>

#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_strings.h>
#include "fuzz_input.h"
#include "ruby_boot.h"

namespace {
long live_arrays = 0;
}

void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
  void* p = std::malloc(size == 0 ? 1 : size);
  if (p != nullptr) ++live_arrays;
  return p;
}
void* operator new[](std::size_t size) {
  void* p = operator new[](size, std::nothrow);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void operator delete[](void* p) noexcept {
  if (p == nullptr) return;
  --live_arrays;
  std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept { operator delete[](p); }
void operator delete[](void* p, std::nothrow_t const&) noexcept { operator delete[](p); }

extern "C" char const* __asan_default_options() { return "detect_leaks=0"; }

namespace {

// Runs call() under rb_protect; answers what it raised, or Qnil.
template <typename Call>
VALUE protect(Call const& call, VALUE& result) {
  if (qmboot::protect([&] { result = call(); }) == 0) return Qnil;
  qmboot::unpoison_below_here();
  VALUE const error = rb_errinfo();
  rb_set_errinfo(Qnil);
  QM_FUZZ_CHECK(!NIL_P(error));
  return error;
}

// Whether error is an instance of expected exactly (nil: nothing raised). A mismatch is
// named on stderr, so that a finding says which exception came instead.
bool raised_as(VALUE error, VALUE expected) {
  if (NIL_P(error) ? NIL_P(expected) : rb_obj_class(error) == expected) return true;
  VALUE const said = NIL_P(error) ? rb_str_new_cstr("nothing")
                                  : rb_funcallv(error, rb_intern("inspect"), 0, nullptr);
  std::fprintf(stderr, "raised %.*s\n", static_cast<int>(RSTRING_LEN(said)), RSTRING_PTR(said));
  return false;
}

bool is_utf8(VALUE string) { return rb_enc_get_index(string) == rb_utf8_encindex(); }
bool valid(VALUE string) {
  return RTEST(rb_funcallv(string, rb_intern("valid_encoding?"), 0, nullptr));
}
std::vector<long> codepoints(VALUE string) {
  VALUE const list = rb_funcallv(string, rb_intern("codepoints"), 0, nullptr);
  std::vector<long> out(static_cast<std::size_t>(RARRAY_LEN(list)));
  for (std::size_t i = 0; i < out.size(); ++i)
    out[i] = NUM2LONG(rb_ary_entry(list, static_cast<long>(i)));
  return out;
}

// value_to_wc_str against the interpreter's own reading of the same String.
void check_wide(VALUE string) {
  long const before = live_arrays;
  VALUE ignored = Qnil;
  wchar_t* wide = nullptr;
  VALUE const raised = protect(
      [&] {
        wide = RU::value_to_wc_str(string);
        return Qnil;
      },
      ignored);
  if (valid(string)) {
    QM_FUZZ_CHECK(raised_as(raised, Qnil) && wide != nullptr);
    QM_FUZZ_CHECK(live_arrays == before + 1);
    std::vector<long> const expected = codepoints(string);
    for (std::size_t i = 0; i < expected.size(); ++i)
      QM_FUZZ_CHECK(static_cast<long>(static_cast<std::uint32_t>(wide[i])) == expected[i]);
    QM_FUZZ_CHECK(wide[expected.size()] == 0);
    delete[] wide;
  } else {
    QM_FUZZ_CHECK(raised_as(raised, rb_eArgError));
  }
  QM_FUZZ_CHECK(live_arrays == before);
  RB_GC_GUARD(string);
}

void bytes_to_string(qmfuzz::Input& in) {
  std::string bytes;
  std::size_t const length = in.byte();
  for (std::size_t i = 0; i < length && !in.empty(); ++i)
    bytes.push_back(static_cast<char>(in.byte()));

  VALUE string = Qnil;
  QM_FUZZ_CHECK(raised_as(
      protect([&] { return RU::to_value(bytes.data(), static_cast<unsigned>(bytes.size())); },
              string),
      Qnil));
  QM_FUZZ_CHECK(RB_TYPE_P(string, T_STRING) && is_utf8(string));
  QM_FUZZ_CHECK(static_cast<std::size_t>(RSTRING_LEN(string)) == bytes.size());
  QM_FUZZ_CHECK(std::memcmp(RSTRING_PTR(string), bytes.data(), bytes.size()) == 0);
  check_wide(string);

  // The NUL-terminated form stops at the first NUL.
  VALUE prefix = Qnil;
  QM_FUZZ_CHECK(raised_as(protect([&] { return RU::to_value(bytes.c_str()); }, prefix), Qnil));
  QM_FUZZ_CHECK(static_cast<std::size_t>(RSTRING_LEN(prefix)) == std::strlen(bytes.c_str()));
  QM_FUZZ_CHECK(is_utf8(prefix));

  // The same bytes read in another encoding: nothing is transcoded.
  static char const* const encodings[] = {"ASCII-8BIT",   "US-ASCII",  "ISO-8859-1", "UTF-16LE",
                                          "UTF-32BE",     "Shift_JIS", "EUC-JP",     "GB18030",
                                          "Windows-1252", "UTF-8"};
  char const* name = encodings[in.byte() % (sizeof encodings / sizeof encodings[0])];
  VALUE other = rb_str_new(bytes.data(), static_cast<long>(bytes.size()));
  rb_enc_associate(other, rb_enc_find(name));
  check_wide(other);
  RB_GC_GUARD(string);
  RB_GC_GUARD(prefix);
  RB_GC_GUARD(other);
}

void units_to_string(qmfuzz::Input& in) {
  std::vector<wchar_t> units;
  bool scalar = true;
  std::size_t const length = in.byte() % 64;
  for (std::size_t i = 0; i < length && !in.empty(); ++i) {
    std::uint8_t const kind = in.byte();
    // Mostly scalar values of every UTF-8 length, with surrogates, the edges and any
    // 32-bit unit mixed in: kinds 0 to 4 draw from [low, low + span), kind 0 from a byte.
    static std::uint32_t const low[] = {0, 0x80, 0x800, 0x10000, 0xD800};
    static std::uint32_t const span[] = {0x80, 0x780, 0xF800, 0x100000, 0x800};
    unsigned const k = kind & 7;
    std::uint32_t const unit = k == 0   ? in.byte() & 0x7fu
                               : k < 5  ? low[k] + in.u32() % span[k]
                               : k == 5 ? ((kind & 8) ? 0x10FFFFu : 0x110000u)
                               : k == 6 ? 0u
                                        : in.u32();
    units.push_back(static_cast<wchar_t>(unit));
    scalar = scalar && unit <= 0x10FFFF && !(unit >= 0xD800 && unit <= 0xDFFF);
  }

  VALUE string = Qnil;
  VALUE const raised = protect(
      [&] { return RU::to_value(units.data(), static_cast<unsigned>(units.size())); }, string);
  if (!scalar) {
    QM_FUZZ_CHECK(raised_as(raised, rb_eRangeError));
    return;
  }
  QM_FUZZ_CHECK(raised_as(raised, Qnil));
  QM_FUZZ_CHECK(RB_TYPE_P(string, T_STRING) && is_utf8(string) && valid(string));
  std::vector<long> const back = codepoints(string);
  QM_FUZZ_CHECK(back.size() == units.size());
  for (std::size_t i = 0; i < back.size(); ++i)
    QM_FUZZ_CHECK(back[i] == static_cast<long>(static_cast<std::uint32_t>(units[i])));
  check_wide(string);

  // The zero-terminated form stops at the first zero unit.
  units.push_back(0);
  std::size_t const up_to_zero = std::wcslen(units.data());
  VALUE prefix = Qnil;
  QM_FUZZ_CHECK(raised_as(protect([&] { return RU::to_value(units.data()); }, prefix), Qnil));
  QM_FUZZ_CHECK(static_cast<std::size_t>(rb_str_strlen(prefix)) == up_to_zero);
  RB_GC_GUARD(string);
  RB_GC_GUARD(prefix);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  ruby_sysinit(argc, argv);
  RUBY_INIT_STACK;
  ruby_init();
  qmboot::process_options("quillmark-fuzz");
  // The interpreter traps these signals and would raise them inside whatever call runs;
  // libFuzzer keeps an existing handler rather than install its own (SIGALRM: its timeout,
  // SIGINT and SIGTERM: stop with statistics, SIGUSR1/2: graceful stop). Back to default.
  for (int const signal : {SIGALRM, SIGINT, SIGTERM, SIGUSR1, SIGUSR2})
    std::signal(signal, SIG_DFL);
  if (qmboot::load_host(QUILLMARK_HOST_RUBY_DIR) == 0 && qmboot::fill_cache() == 0) return 0;
  std::fprintf(stderr,
               "strings_fuzz: loading the host stand-in or filling the handle cache failed\n");
  std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  qmfuzz::Input in(data, size);
  while (!in.empty()) (in.byte() & 1 ? units_to_string : bytes_to_string)(in);
  return 0;
}
