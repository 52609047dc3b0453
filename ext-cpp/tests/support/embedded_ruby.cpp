#include "embedded_ruby.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ruby_boot.h"

namespace qmtest {

ID marker_before_init = 0;
bool host_loaded = false;

std::string take_exception(int state) {
  if (state == 0) return std::string();
  qmboot::unpoison_below_here();
  VALUE error = rb_errinfo();
  rb_set_errinfo(Qnil);
  if (NIL_P(error)) return "non-local exit (tag " + std::to_string(state) + ")";
  VALUE name = rb_class_name(rb_obj_class(error));
  VALUE message = rb_funcallv(error, rb_intern("message"), 0, nullptr);
  return std::string(StringValueCStr(name)) + ": " +
         std::string(RSTRING_PTR(message), RSTRING_LEN(message));
}

VALUE eval(const char* ruby_code) {
  int state = 0;
  VALUE result = rb_eval_string_protect(ruby_code, &state);
  if (state == 0) return result;
  ADD_FAILURE() << "Ruby raised in `" << ruby_code << "`: " << take_exception(state);
  return Qnil;
}

bool compact_and_verify() {
#if RUBY_API_VERSION_CODE < 20700
  return false;  // compaction arrived in 2.7
#else
  eval("GC.compact");
  // Moving every object toward the empty end of a heap with room for all of them is the
  // hardest case. The room is made differently per version: 2.7 to 3.1 double the heap and
  // give it back; 3.2's expand_heap (and its deprecated double_heap) add as many pages again
  // as the heap has and keep them, so after every test the heap doubles until memory runs
  // out: there the objects move as far as the free slots allow. 3.3 adds only what is needed.
#if RUBY_API_VERSION_CODE < 30200
  eval("GC.verify_compaction_references(double_heap: true, toward: :empty)");
#elif RUBY_API_VERSION_CODE < 30300
  eval("GC.verify_compaction_references(toward: :empty)");
#else
  eval("GC.verify_compaction_references(expand_heap: true, toward: :empty)");
#endif
  return true;
#endif
}

std::string raised(const char* ruby_code) {
  int state = 0;
  rb_eval_string_protect(ruby_code, &state);
  return take_exception(state);
}

}  // namespace qmtest

namespace {

bool env_flag(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && std::strcmp(value, "1") == 0;
}

// Compaction between tests moves every object that is not pinned: a handle the cache
// failed to pin, or a VALUE held where the collector cannot see it, is then stale.
class CompactAfterEachTest : public testing::EmptyTestEventListener {
  void OnTestEnd(testing::TestInfo const&) override { qmtest::compact_and_verify(); }
};

int die(const char* what, int state) {
  std::fprintf(stderr, "%s: %s\n", what, qmtest::take_exception(state).c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Test discovery only lists names: no interpreter needed.
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();

  ruby_sysinit(&argc, &argv);
  RUBY_INIT_STACK;
  ruby_init();
  qmboot::process_options("quillmark-tests");

  const char* host = std::getenv("QM_HOST");
  if (host == nullptr || std::strcmp(host, "none") != 0) {
    int state = qmboot::load_host(QUILLMARK_HOST_RUBY_DIR);
    if (state != 0) return die("loading the host stand-in failed", state);

    qmtest::marker_before_init = rb_intern("quillmark_tests_marker_before_init");
    state = qmboot::fill_cache();
    if (state != 0) return die("filling the handle cache failed", state);
    qmtest::host_loaded = true;
  }

  if (env_flag("QM_GC_COMPACT"))
    testing::UnitTest::GetInstance()->listeners().Append(new CompactAfterEachTest);
  if (env_flag("QM_GC_STRESS")) qmtest::eval("GC.stress = true");

  int const result = RUN_ALL_TESTS();
  qmtest::eval("GC.stress = false");
  ruby_cleanup(0);
  return result;
}
