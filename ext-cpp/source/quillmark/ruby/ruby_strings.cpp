#include <quillmark/ruby/ruby_strings.h>

#include <quillmark/ruby/detail/ruby_encoding_lib.h>
#include <quillmark/utils/fatal_assert.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace RU {

namespace {

// Bytes that a Unicode scalar value takes in UTF-8, or 0 when the unit is none: a
// surrogate, or anything past U+10FFFF (negative wchar_t values land here too).
unsigned utf8_length(std::uint32_t code) {
  if (code < 0x80) return 1;
  if (code < 0x800) return 2;
  if (code < 0x10000) return (code >= 0xD800 && code <= 0xDFFF) ? 0 : 3;
  if (code <= 0x10FFFF) return 4;
  return 0;
}

// Writes `code`, already known to be a scalar value of `length` bytes, and answers the
// position after it.
char* put_utf8(std::uint32_t code, unsigned length, char* out) {
  switch (length) {
    case 1:
      *out++ = static_cast<char>(code);
      break;
    case 2:
      *out++ = static_cast<char>(0xC0 | (code >> 6));
      *out++ = static_cast<char>(0x80 | (code & 0x3F));
      break;
    case 3:
      *out++ = static_cast<char>(0xE0 | (code >> 12));
      *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      *out++ = static_cast<char>(0x80 | (code & 0x3F));
      break;
    default:
      *out++ = static_cast<char>(0xF0 | (code >> 18));
      *out++ = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      *out++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      *out++ = static_cast<char>(0x80 | (code & 0x3F));
      break;
  }
  return out;
}

// Decodes one character of UTF-8 already known to be well formed (the String's coderange
// says so) and answers the position after it.
unsigned char const* get_utf8(unsigned char const* p, wchar_t& out) {
  unsigned lead = *p;
  if (lead < 0x80) {
    out = static_cast<wchar_t>(lead);
    return p + 1;
  }
  if (lead < 0xE0) {
    out = static_cast<wchar_t>(((lead & 0x1Fu) << 6) | (p[1] & 0x3Fu));
    return p + 2;
  }
  if (lead < 0xF0) {
    out = static_cast<wchar_t>(((lead & 0x0Fu) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu));
    return p + 3;
  }
  out = static_cast<wchar_t>(((lead & 0x07u) << 18) | ((p[1] & 0x3Fu) << 12) |
                             ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu));
  return p + 4;
}

VALUE tag_utf8(VALUE string) {
  rb_enc_associate_index(string, rb_utf8_encindex());
  return string;
}

// Decodes every character of [p, e) and throws the result away. rb_enc_codepoint_len
// raises on the first invalid sequence, so running this before the result array exists
// means that raise can leave nothing behind.
void check_decodable(char const* p, char const* e, rb_encoding* enc) {
  while (p < e) {
    int length = 0;
    rb_enc_codepoint_len(p, e, &length, enc);
    p += length;
  }
}

// wchar_t is a signed 32-bit unit here as on the host's platform: a negative unit becomes a
// value past U+10FFFF, which utf8_length refuses like any other.
std::uint32_t code_of(wchar_t unit) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(unit));
}

}  // namespace

VALUE to_value(char const* str) { return tag_utf8(rb_str_new_cstr(str)); }

VALUE to_value(char const* str, unsigned int length) {
  return tag_utf8(rb_str_new(str, static_cast<long>(length)));
}

VALUE to_value(wchar_t const* str) {
  return to_value(str, static_cast<unsigned int>(std::wcslen(str)));
}

VALUE to_value(wchar_t const* str, unsigned int length) {
  // First pass: measure, and refuse a bad unit before anything is allocated. The
  // interpreter is asked to encode only the units we refuse, so the exception is its own
  // (RangeError, "invalid codepoint 0xD800 in UTF-8" and the like).
  std::uint32_t total = 0;
  for (unsigned int i = 0; i < length; ++i) {
    std::uint32_t const code = code_of(str[i]);
    unsigned bytes = utf8_length(code);
    if (bytes == 0) {
      rb_enc_uint_chr(code, rb_utf8_encoding());
      QM_ASSERT(!"rb_enc_uint_chr accepted a unit that is no Unicode scalar value");
    }
    total += bytes;
  }

  // Second pass: encode straight into the new String's own storage.
  VALUE string = rb_str_new(nullptr, static_cast<long>(total));
  char* out = RSTRING_PTR(string);
  for (unsigned int i = 0; i < length; ++i) {
    std::uint32_t const code = code_of(str[i]);
    out = put_utf8(code, utf8_length(code), out);
  }
  return tag_utf8(string);
}

wchar_t* value_to_wc_str(VALUE value) {
  VALUE string = rb_string_value(&value);
  rb_encoding* enc = rb_enc_get(string);
  char const* p = RSTRING_PTR(string);
  char const* e = RSTRING_END(string);

  // The only raise after this point would come from a broken byte sequence: provoke it
  // now, while nothing is allocated, rather than catch it later to free the array.
  int coderange = rb_enc_str_coderange(string);
  if (coderange == ENC_CODERANGE_BROKEN) check_decodable(p, e, enc);

  auto count = static_cast<std::uint32_t>(rb_enc_strlen(p, e, enc));
  wchar_t* result = new (std::nothrow) wchar_t[count + 1];
  if (result == nullptr) rb_memerror();

  if (coderange == ENC_CODERANGE_7BIT && rb_enc_asciicompat(enc)) {
    // Pure ASCII in an ASCII-compatible encoding: every byte is its own code point.
    for (std::uint32_t i = 0; i < count; ++i) {
      result[i] = static_cast<wchar_t>(static_cast<unsigned char>(p[i]));
    }
  } else if (coderange == ENC_CODERANGE_VALID && rb_enc_to_index(enc) == rb_utf8_encindex()) {
    // Well-formed UTF-8, the common case: decoded here rather than through the encoding's
    // function table, one indirect call per character.
    auto const* u = reinterpret_cast<unsigned char const*>(p);
    for (std::uint32_t i = 0; i < count; ++i) u = get_utf8(u, result[i]);
  } else {
    for (std::uint32_t i = 0; i < count; ++i) {
      int length = 0;
      result[i] = static_cast<wchar_t>(rb_enc_codepoint_len(p, e, &length, enc));
      p += length;
    }
  }
  result[count] = 0;
  RB_GC_GUARD(string);
  return result;
}

VALUE array_delete_first(VALUE array, VALUE item) {
  if (!RTEST(rb_obj_is_kind_of(array, rb_cArray))) {
    rb_raise(rb_eTypeError, "Expected an Array object!");
  }
  auto length = static_cast<std::uint32_t>(RARRAY_LEN(array));
  for (std::uint32_t i = 0; i < length; ++i) {
    if (rb_ary_entry(array, static_cast<long>(i)) == item) {
      rb_ary_delete_at(array, static_cast<long>(i));
      return rb_uint2inum(i);
    }
  }
  return Qnil;
}

}  // namespace RU
