#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <quillmark/ruby/ruby_entities.h>
#include <quillmark/ruby/ruby_handles.h>
#include "bridge_test_util.h"

using qmtest::eval;
using qmtest::truthy;

namespace {

// A model with a group at each depth, component instances at the top level, inside a group
// and inside a definition, and a group inside a component definition. qm_fake(name: value,
// ...) answers an object whose methods of those names return those values, whatever their
// arguments: a duck-typed entity for the paths real entities cannot reach.
const char* const kBuildModel = R"(
  def qm_fake(answers)
    Object.new.tap { |o| answers.each { |name, value| o.define_singleton_method(name) { |*| value } } }
  end
  $m = Sketchup::Model.new
  $top = $m.entities.add_group
  $g1 = $m.entities.add_group
  $g2 = $g1.entities.add_group
  $g3 = $g2.entities.add_group
  $chair = $m.definitions.add("Chair")
  $leg = $m.definitions.add("Leg")
  $in_chair = $chair.entities.add_group
  $ci_top = $m.entities.add_instance($chair)
  $ci_deep = $g3.entities.add_instance($chair)
  $ci_in_chair = $chair.entities.add_instance($leg)
  $ci_top.transformation = (1..16).map { |i| i * 0.5 }
  $g3.transformation = (1..16).map { |i| -i / 3.0 }
)";

int32_t sdk_id(SUEntityRef entity) {
  int32_t id = -1;
  EXPECT_EQ(SUEntityGetID(entity, &id), SU_ERROR_NONE);
  return id;
}

int32_t ruby_id(VALUE entity) {
  return NUM2INT(rb_funcallv(entity, rb_intern("entityID"), 0, nullptr));
}

// Every finder's outputs, set to markers before each call so that any write shows.
int marker;
const Geom::Transformation kMarkedMatrix(Geom::Vector3(7.0, 8.0, 9.0));
struct Outputs {
  SUGroupRef group;
  SUComponentInstanceRef instance;
  SUComponentDefinitionRef definition;
  SUEntityRef entity;
  Geom::Transformation transformation;
} out;

void mark_outputs() {
  out.group.ptr = out.instance.ptr = out.definition.ptr = out.entity.ptr = &marker;
  out.transformation = kMarkedMatrix;
}

bool untouched() {
  return out.group.ptr == &marker && out.instance.ptr == &marker && out.definition.ptr == &marker &&
         out.entity.ptr == &marker &&
         std::memcmp(&out.transformation, &kMarkedMatrix, sizeof kMarkedMatrix) == 0;
}

// A finder, and the entity of what it found.
struct Finder {
  const char* name;
  SUResult (*find)(VALUE);
  SUEntityRef (*found)();
};
const Finder GROUP = {"group", [](VALUE v) { return RU::vsu_to_csu_group(v, &out.group); },
                      [] { return SUGroupToEntity(out.group); }};
const Finder INSTANCE = {
    "instance", [](VALUE v) { return RU::vsu_to_csu_component_instance(v, &out.instance); },
    [] { return SUComponentInstanceToEntity(out.instance); }};
const Finder DEFINITION = {
    "definition", [](VALUE v) { return RU::vsu_to_csu_component_definition(v, &out.definition); },
    [] { return SUComponentDefinitionToEntity(out.definition); }};
const Finder GCI_ENTITY = {"gci entity",
                           [](VALUE v) { return RU::vsu_to_csu_gci_entity(v, &out.entity); },
                           [] { return out.entity; }};
const Finder PARTS = {"parts",
                      [](VALUE v) {
                        return RU::csu_ent_def_tra_from_vsu_gci(v, &out.entity, &out.definition,
                                                                out.transformation);
                      },
                      [] { return out.entity; }};

SUResult run(Finder const& finder, VALUE entity) {
  mark_outputs();
  return finder.find(entity);
}

class EntityFinders : public ::testing::Test {
 protected:
  void SetUp() override {
    eval(kBuildModel);
    su_standin_reset();
  }
  void TearDown() override {
    su_standin_reset();
    eval(
        "$m = $top = $g1 = $g2 = $g3 = $chair = $leg = $in_chair = $ci_top = $ci_deep = "
        "$ci_in_chair = $v = nil");
  }

  // Runs the finder on the value of `entity` once cleanly, then once for each call the clean
  // run made of each function, with `spoil(function, nth)` making that call go wrong: every
  // such run must answer `expected(function)` and leave the outputs alone.
  template <class Spoil, class Expected>
  static void expect_each_call_fails(Finder const& finder, const char* entity,
                                     std::vector<const char*> const& functions, Spoil spoil,
                                     Expected expected) {
    const VALUE value = qmtest::let("$v", eval(entity));
    for (const char* function : functions) {
      su_standin_reset();
      ASSERT_EQ(run(finder, value), SU_ERROR_NONE) << finder.name << " " << entity;
      const size_t calls = su_standin_calls(function);
      EXPECT_GT(calls, 0u) << function << " is not on the walk of " << finder.name << " " << entity;
      for (size_t nth = 1; nth <= calls; ++nth) {
        su_standin_reset();
        spoil(function, nth);
        EXPECT_EQ(run(finder, value), expected(function))
            << finder.name << " " << entity << ": " << function << nth;
        EXPECT_TRUE(untouched()) << finder.name << " " << entity << ": " << function << nth;
      }
    }
    su_standin_reset();
  }
};

// Found: the entity with the same ID; not found: SU_ERROR_GENERIC, outputs untouched. Either
// way the walk goes only as far as it needs: `function` is called `calls` times. $m has eight
// collections of entities: the top level, five group definitions and two component ones.
TEST_F(EntityFinders, FindOnlyWhatIsThereAndWalkOnlyAsFarAsNeeded) {
  eval(R"(
    $empty = Sketchup::Model.new
    $lost_in_empty = qm_fake(model: $empty, entityID: 1, "group?": false)
    $lost_in_full = qm_fake(model: $m, entityID: 987654, "group?": true)
    $liar = $leg.dup
    def $liar.group?; true; end
  )");
  const struct {
    Finder const& finder;
    const char* entity;
    SUResult result;
    const char* function;
    size_t calls;
    const char* fault = nullptr;  // its first call fails
  } cases[] = {
      {GROUP, "$top", SU_ERROR_NONE, "SUModelGetNumGroupDefinitions", 0},
      // Three deep, yet found in its parent group's definition without the component definitions.
      {GROUP, "$g3", SU_ERROR_NONE, "SUModelGetNumComponentDefinitions", 0},
      {GROUP, "$in_chair", SU_ERROR_NONE, "SUModelGetComponentDefinitions", 1},
      {INSTANCE, "$ci_in_chair", SU_ERROR_NONE, "SUModelGetComponentDefinitions", 1},
      // group? decides which definition list is searched.
      {DEFINITION, "$g2.entities.parent", SU_ERROR_NONE, "SUModelGetNumComponentDefinitions", 0},
      {DEFINITION, "$leg", SU_ERROR_NONE, "SUModelGetNumGroupDefinitions", 0},
      {DEFINITION, "$liar", SU_ERROR_GENERIC, "SUModelGetNumComponentDefinitions", 0},
      // $chair is listed before $leg: its ID cannot be read, so it is skipped, not fatal.
      {DEFINITION, "$leg", SU_ERROR_NONE, "SUModelGetComponentDefinitions", 1, "SUEntityGetID"},
      {DEFINITION, "$chair", SU_ERROR_GENERIC, "SUModelGetComponentDefinitions", 1,
       "SUEntityGetID"},
      // Only component instances take the instance walk; a definition is searched as a group.
      {GCI_ENTITY, "$ci_deep", SU_ERROR_NONE, "SUEntitiesGetNumGroups", 0},
      {GCI_ENTITY, "$g2", SU_ERROR_NONE, "SUEntitiesGetNumInstances", 0},
      {GCI_ENTITY, "$chair", SU_ERROR_GENERIC, "SUEntitiesGetNumInstances", 0},
      {GCI_ENTITY, "$chair", SU_ERROR_GENERIC, "SUEntitiesGetNumGroups", 8},
      {GROUP, "$lost_in_empty", SU_ERROR_GENERIC, "SUEntitiesGetNumGroups", 1},
      {INSTANCE, "$lost_in_empty", SU_ERROR_GENERIC, "SUEntitiesGetNumInstances", 1},
      {DEFINITION, "$lost_in_empty", SU_ERROR_GENERIC, "SUModelGetNumComponentDefinitions", 1},
      {GROUP, "$lost_in_full", SU_ERROR_GENERIC, "SUEntitiesGetNumGroups", 8},
      {INSTANCE, "$lost_in_full", SU_ERROR_GENERIC, "SUEntitiesGetNumInstances", 8},
      {DEFINITION, "$lost_in_full", SU_ERROR_GENERIC, "SUModelGetNumGroupDefinitions", 1},
  };
  for (auto const& c : cases) {
    const VALUE entity = qmtest::let("$v", eval(c.entity));
    su_standin_reset();
    if (c.fault) su_standin_fail(c.fault, SU_ERROR_OUT_OF_RANGE, 1);
    EXPECT_EQ(run(c.finder, entity), c.result) << c.finder.name << " " << c.entity;
    if (c.result == SU_ERROR_NONE) {
      EXPECT_EQ(sdk_id(c.finder.found()), ruby_id(entity)) << c.finder.name << " " << c.entity;
    } else {
      EXPECT_TRUE(untouched()) << c.finder.name << " " << c.entity;
    }
    EXPECT_EQ(su_standin_calls(c.function), c.calls)
        << c.finder.name << " " << c.entity << ": " << c.function;
  }
  eval("$empty = $lost_in_empty = $lost_in_full = $liar = nil");
}

// A model grown at random: definitions, groups nested in any container so far, and component
// instances of any definition, each with its own transformation.
TEST_F(EntityFinders, EveryPlacementOfARandomModelComesBackWithItsDefinitionAndTransformation) {
  eval(R"(
    rng = Random.new(20240607)
    $rm = Sketchup::Model.new
    containers = [$rm.entities]
    components = []
    $placements = []
    240.times do
      case rng.rand(5)
      when 0
        components << $rm.definitions.add("D#{components.size}")
        containers << components.last.entities
      when 1, 2
        $placements << containers.sample(random: rng).add_group
        containers << $placements.last.entities
      else
        next if components.empty?
        $placements << containers.sample(random: rng).add_instance(components.sample(random: rng))
      end
      $placements.last.transformation = Array.new(16) { rng.rand(-9.0..9.0) } unless $placements.empty?
    end
  )");
  const VALUE placements = rb_gv_get("$placements");
  ASSERT_GT(RARRAY_LEN(placements), 60);
  for (long i = 0; i < RARRAY_LEN(placements); ++i) {
    const VALUE placement = rb_ary_entry(placements, i);
    ASSERT_EQ(run(PARTS, placement), SU_ERROR_NONE) << "placement " << i;
    EXPECT_EQ(sdk_id(out.entity), ruby_id(placement)) << "placement " << i;
    EXPECT_EQ(sdk_id(SUComponentDefinitionToEntity(out.definition)),
              ruby_id(RU::vsu_get_definition(placement)))
        << "placement " << i;
    // The matrix is copied, not computed: every element comes through bit for bit.
    const VALUE values =
        eval(("$placements[" + std::to_string(i) + "].transformation.to_a").c_str());
    for (long k = 0; k < 16; ++k)
      EXPECT_EQ(out.transformation.data()[k], NUM2DBL(rb_ary_entry(values, k)))
          << "placement " << i << " " << k;
    const SUEntityRef entity = out.entity;
    ASSERT_EQ(run(GCI_ENTITY, placement), SU_ERROR_NONE);
    EXPECT_EQ(out.entity.ptr, entity.ptr);
  }
  eval("$rm = $placements = nil");
}

// For each SDK function a clean run made, each of its calls in turn fails with a code of its
// own: the finder answers that code, or SU_ERROR_INVALID_INPUT when the failing function
// hands out an invalid reference that the next call rejects.
TEST_F(EntityFinders, EveryFailingSdkCallIsPassedOn) {
  const std::vector<const char*> walk = {"SUModelFromExisting",
                                         "SUModelGetEntities",
                                         "SUEntityGetID",
                                         "SUModelGetNumGroupDefinitions",
                                         "SUModelGetGroupDefinitions",
                                         "SUComponentDefinitionGetEntities",
                                         "SUModelGetNumComponentDefinitions",
                                         "SUModelGetComponentDefinitions"};
  std::vector<const char*> group_walk = walk, instance_walk = walk;
  group_walk.insert(group_walk.end(),
                    {"SUEntitiesGetNumGroups", "SUEntitiesGetGroups", "SUGroupToEntity"});
  instance_walk.insert(instance_walk.end(), {"SUEntitiesGetNumInstances", "SUEntitiesGetInstances",
                                             "SUComponentInstanceToEntity"});
  const struct {
    Finder const& finder;
    const char* entity;  // one the walk reaches last, so it makes every call it can
    std::vector<const char*> functions;
  } cases[] = {
      {GROUP, "$in_chair", group_walk},
      {INSTANCE, "$ci_in_chair", instance_walk},
      {DEFINITION,
       "$leg",
       {"SUModelFromExisting", "SUModelGetNumComponentDefinitions",
        "SUModelGetComponentDefinitions"}},
      {DEFINITION,
       "$g3.entities.parent",
       {"SUModelFromExisting", "SUModelGetNumGroupDefinitions", "SUModelGetGroupDefinitions"}},
      {PARTS,
       "$ci_in_chair",
       {"SUComponentInstanceGetDefinition", "SUComponentInstanceGetTransform",
        "SUEntitiesGetInstances"}},
      {PARTS, "$g3", {"SUGroupGetDefinition", "SUGroupGetTransform", "SUEntityGetID"}},
  };
  for (auto const& c : cases) {
    expect_each_call_fails(
        c.finder, c.entity, c.functions,
        [](const char* function, size_t nth) {
          ASSERT_EQ(su_standin_fail(function, SU_ERROR_OUT_OF_RANGE, nth), 1);
        },
        [](const char* function) {
          return std::string(function) == "SUModelFromExisting" ||
                         std::strstr(function, "ToEntity") != nullptr
                     ? SU_ERROR_INVALID_INPUT
                     : SU_ERROR_OUT_OF_RANGE;
        });
  }
}

// A model larger than memory: each count the walk reads, in turn, is one no allocation can
// hold (its byte size overflows, or malloc answers null). The finders answer
// RU::ALLOCATION_FAILED and leave their outputs alone instead of ending the host.
TEST_F(EntityFinders, CountsNoMemoryHoldsFailWithoutTouchingOutputs) {
  for (size_t size : {SIZE_MAX / 2, size_t{1} << 58}) {
    const auto spoil = [size](const char* function, size_t nth) {
      su_standin_report_size(function, size, nth);
    };
    const auto expected = [](const char*) { return RU::ALLOCATION_FAILED; };
    expect_each_call_fails(GROUP, "$in_chair",
                           {"SUEntitiesGetNumGroups", "SUModelGetNumGroupDefinitions",
                            "SUModelGetNumComponentDefinitions"},
                           spoil, expected);
    expect_each_call_fails(DEFINITION, "$chair", {"SUModelGetNumComponentDefinitions"}, spoil,
                           expected);
    expect_each_call_fails(GCI_ENTITY, "$ci_top", {"SUEntitiesGetNumInstances"}, spoil, expected);
  }
}

TEST_F(EntityFinders, ModelIsTheAddressSkpdocReports) {
  SUModelRef model = SU_INVALID;
  EXPECT_EQ(RU::vsu_to_csu_model(rb_gv_get("$m"), &model), SU_ERROR_NONE);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(model.ptr), NUM2ULL(eval("$m.skpdoc(true)")));
  // skpdoc is asked with true, and nothing else is checked: an address that names no model
  // still answers 0 and leaves the rejection to the first SDK call.
  VALUE fake = qmtest::let("$v", eval("Object.new.tap { |o| def o.skpdoc(flag); raise "
                                      "ArgumentError unless flag == true; 4096; end }"));
  EXPECT_EQ(RU::vsu_to_csu_model(fake, &model), SU_ERROR_NONE);
  EXPECT_EQ(model.ptr, nullptr);
}

TEST_F(EntityFinders, RubyErrorsPropagateBeforeTheSdkIsTouched) {
  const char* cases[][2] = {
      {"qm_fake(model: $m, 'group?': false).tap { |o| def o.entityID; raise IOError, 'no id'; end "
       "}",
       "IOError: no id"},
      {"qm_fake(model: $m, entityID: '7', 'group?': false)", "TypeError"},
      {"qm_fake(model: $m, entityID: 2**40, 'group?': false)", "RangeError"},
      {"qm_fake(model: Object.new, entityID: 1, 'group?': false)", "NoMethodError"},
      {"qm_fake(model: qm_fake(skpdoc: 'not an address'), entityID: 1, 'group?': false)",
       "TypeError"}};
  for (auto const& c : cases) {
    const VALUE entity = qmtest::let("$v", eval(c[0]));
    for (Finder const* finder : {&GROUP, &INSTANCE, &DEFINITION}) {
      mark_outputs();
      EXPECT_EQ(qmtest::raised_by([&] { finder->find(entity); }).rfind(c[1], 0), 0u)
          << finder->name << " " << c[0];
      EXPECT_TRUE(untouched()) << finder->name << " " << c[0];
    }
  }
  // Every Ruby call comes first: none of the raising cases reached the entity walk.
  EXPECT_EQ(su_standin_calls("SUModelGetEntities"), 0u);
  EXPECT_EQ(su_standin_calls("SUModelGetNumComponentDefinitions"), 0u);
}

class DefinitionOfPlacement : public EntityFinders {
 protected:
  void TearDown() override {
    eval("HostStandin.reset");
    RU::init_ruby();
    EntityFinders::TearDown();
  }
  static void host_version(const char* version) {
    eval((std::string("HostStandin.version = '") + version + "'").c_str());
    RU::init_ruby();
  }
};

TEST_F(DefinitionOfPlacement, ModernHostAsksTheEntities) {
  host_version("14.0.4900");
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$ci_deep")), rb_gv_get("$chair"));
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$g3")), eval("$g2.entities.at(0).entities.parent"));
  EXPECT_TRUE(truthy("$g3.entities.parent.group?"));
  // A copy is answered through its own entities, identity plays no part.
  EXPECT_EQ(RU::vsu_get_definition(eval("$g3.dup")), eval("$g3.entities.parent"));
}

TEST_F(DefinitionOfPlacement, OldHostScansGroupDefinitionsForTheVeryObject) {
  host_version("13.0.4812");
  // The old host has no Entities#parent: a pass here proves the scan never leans on it.
  ASSERT_NE(qmtest::raised("$g1.entities.parent"), "");
  eval("HostStandin.version = '14.0'; $v = $g3.entities.parent; HostStandin.version = '13.0.4812'");
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$g3")), rb_gv_get("$v"));
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$in_chair")),
            eval("$m.definitions.find { |d| d.instances.include?($in_chair) }"));
  // Component instances still ask for their definition.
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$ci_in_chair")), rb_gv_get("$leg"));
  // Equal (same entity ID) but not the same object: not among any definition's instances.
  EXPECT_TRUE(truthy("$g3.dup == $g3"));
  EXPECT_EQ(RU::vsu_get_definition(eval("$g3.dup")), Qnil);
}

TEST_F(DefinitionOfPlacement, OldHostTreatsEverythingButFalseAsAGroupDefinition) {
  host_version("8.0.4811");
  eval(R"(
    $gci = Object.new
    $not_group = qm_fake("group?": false, instances: [$gci])
    $nil_group = qm_fake("group?": nil, instances: [Object.new, $gci])
    $fake_model = qm_fake(definitions: [$not_group, $nil_group])
    def $gci.model; $fake_model; end
    $orphan = qm_fake(model: qm_fake(definitions: []))
  )");
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$gci")), rb_gv_get("$nil_group"));
  EXPECT_EQ(RU::vsu_get_definition(rb_gv_get("$orphan")), Qnil);
  eval("$gci = $not_group = $nil_group = $fake_model = $orphan = nil");
}

TEST(Buffer, ReserveGrowsToExactlyTheCountAndKeepsTheElements) {
  EXPECT_EQ(RU::Buffer<SUGroupRef>(0).capacity, 1u);
  RU::Buffer<SUGroupRef> buffer(4);
  int cells[4];
  for (int i = 0; i < 4; ++i) buffer.data[i].ptr = &cells[i];
  const SUGroupRef* before = buffer.data;
  EXPECT_TRUE(buffer.reserve(4));
  EXPECT_EQ(buffer.data, before) << "a reserve at or below capacity must not reallocate";
  for (unsigned long n : {5ul, 1000ul}) {
    EXPECT_TRUE(buffer.reserve(n));
    EXPECT_EQ(buffer.capacity, n);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(buffer.data[i].ptr, &cells[i]);
    buffer.data[n - 1].ptr = nullptr;  // the new slots are usable (ASan would flag an overrun)
  }
}

}  // namespace
