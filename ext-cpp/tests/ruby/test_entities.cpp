#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "bridge_test_util.h"
#include <quillmark/ruby/ruby_entities.h>
#include <quillmark/ruby/ruby_handles.h>

using qmtest::eval;
using qmtest::truthy;

namespace {

// A model with a group at each depth, component instances at the top level, inside a group
// and inside a definition, and a group inside a component definition.
const char* const kBuildModel = R"(
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

// A model grown at random: definitions, groups nested in any container so far, and component
// instances of any definition, each with its own transformation. $placements lists every
// group and instance made.
const char* const kBuildRandomModel = R"(
  rng = Random.new(20240607)
  $rm = Sketchup::Model.new
  containers = [$rm.entities]
  components = []
  $placements = []
  240.times do
    case rng.rand(5)
    when 0
      definition = $rm.definitions.add("D#{components.size}")
      components << definition
      containers << definition.entities
    when 1, 2
      group = containers.sample(random: rng).add_group
      group.transformation = Array.new(16) { rng.rand(-9.0..9.0) }
      $placements << group
      containers << group.entities
    else
      next if components.empty?
      instance = containers.sample(random: rng).add_instance(components.sample(random: rng))
      instance.transformation = Array.new(16) { rng.rand(-9.0..9.0) }
      $placements << instance
    end
  end
)";

int32_t sdk_id(SUEntityRef entity) {
  int32_t id = -1;
  EXPECT_EQ(SUEntityGetID(entity, &id), SU_ERROR_NONE);
  return id;
}

int32_t ruby_id(VALUE entity) { return NUM2INT(rb_funcallv(entity, rb_intern("entityID"), 0, nullptr)); }

VALUE global(const char* name) { return rb_gv_get(name); }

// A reference no finder can produce, to tell an untouched output from a written one.
template <class Ref>
Ref sentinel() {
  static int marker;
  Ref ref;
  ref.ptr = &marker;
  return ref;
}

bool is_ref_returning(const std::string& function) {
  return function == "SUModelFromExisting" || function.find("ToEntity") != std::string::npos;
}

// qm_fake(name: value, ...) answers an object whose methods of those names return those values,
// whatever their arguments: a duck-typed entity for the paths real entities cannot reach.
const char* const kDefineFake = R"(
  def qm_fake(**answers)
    Object.new.tap { |o| answers.each { |name, value| o.define_singleton_method(name) { |*| value } } }
  end
)";

class EntityFinders : public ::testing::Test {
 protected:
  void SetUp() override {
    eval(kDefineFake);
    eval(kBuildModel);
    su_standin_reset();
  }
  void TearDown() override {
    su_standin_reset();
    eval("$m = $top = $g1 = $g2 = $g3 = $chair = $leg = $in_chair = $ci_top = $ci_deep = $ci_in_chair = nil");
  }

  // Runs `call` with every failure the walk can meet: for each SDK function it made in a clean
  // run, each of its calls in turn fails with a code of its own. The finder must answer that
  // code (or SU_ERROR_INVALID_INPUT when the failing function hands out an invalid reference
  // that the next call rejects) and `untouched` must still hold.
  template <class Call, class Untouched>
  void expect_every_failure_passed_on(const std::vector<const char*>& functions, Call call,
                                      Untouched untouched) {
    for (const char* function : functions) {
      su_standin_reset();
      ASSERT_EQ(call(), SU_ERROR_NONE) << function;
      const size_t calls = su_standin_calls(function);
      EXPECT_GT(calls, 0u) << function << " is not on this walk";
      for (size_t nth = 1; nth <= calls; ++nth) {
        su_standin_reset();
        ASSERT_EQ(su_standin_fail(function, SU_ERROR_OUT_OF_RANGE, nth), 1);
        const SUResult expected = is_ref_returning(function) ? SU_ERROR_INVALID_INPUT : SU_ERROR_OUT_OF_RANGE;
        EXPECT_EQ(call(), expected) << function << " failing on call " << nth;
        EXPECT_TRUE(untouched()) << function << " failing on call " << nth;
      }
    }
    su_standin_reset();
  }

  // The same for csu_ent_def_tra_from_vsu_gci, whose three outputs must all stay as they were.
  void expect_every_parts_failure_passed_on(const char* gci, const std::vector<const char*>& functions) {
    SUEntityRef entity = sentinel<SUEntityRef>();
    SUComponentDefinitionRef definition = sentinel<SUComponentDefinitionRef>();
    const Geom::Transformation before(Geom::Vector3(7.0, 8.0, 9.0));
    Geom::Transformation transformation = before;
    expect_every_failure_passed_on(
        functions,
        [&] {
          entity = sentinel<SUEntityRef>();
          definition = sentinel<SUComponentDefinitionRef>();
          transformation = before;
          return RU::csu_ent_def_tra_from_vsu_gci(global(gci), &entity, &definition, transformation);
        },
        [&] {
          return entity.ptr == sentinel<SUEntityRef>().ptr &&
                 definition.ptr == sentinel<SUComponentDefinitionRef>().ptr &&
                 std::memcmp(&transformation, &before, sizeof before) == 0;
        });
  }
};

TEST_F(EntityFinders, GroupsAreFoundAtEveryDepthAndOnlyAsFarAsNeeded) {
  SUGroupRef group = SU_INVALID;
  ASSERT_EQ(RU::vsu_to_csu_group(global("$top"), &group), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUGroupToEntity(group)), ruby_id(global("$top")));
  // Found at the top level: no definition was ever listed.
  EXPECT_EQ(su_standin_calls("SUModelGetNumGroupDefinitions"), 0u);

  su_standin_reset();
  ASSERT_EQ(RU::vsu_to_csu_group(global("$g3"), &group), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUGroupToEntity(group)), ruby_id(global("$g3")));
  // Three deep, yet found in its parent group's definition without the component definitions.
  EXPECT_EQ(su_standin_calls("SUModelGetNumComponentDefinitions"), 0u);

  su_standin_reset();
  ASSERT_EQ(RU::vsu_to_csu_group(global("$in_chair"), &group), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUGroupToEntity(group)), ruby_id(global("$in_chair")));
  EXPECT_EQ(su_standin_calls("SUModelGetComponentDefinitions"), 1u);
}

TEST_F(EntityFinders, EveryPlacementOfARandomModelComesBackWithItsDefinitionAndTransformation) {
  eval(kBuildRandomModel);
  const VALUE placements = global("$placements");
  ASSERT_GT(RARRAY_LEN(placements), 60);
  for (long i = 0; i < RARRAY_LEN(placements); ++i) {
    const VALUE placement = rb_ary_entry(placements, i);
    SUEntityRef entity = SU_INVALID;
    SUComponentDefinitionRef definition = SU_INVALID;
    Geom::Transformation transformation;
    ASSERT_EQ(RU::csu_ent_def_tra_from_vsu_gci(placement, &entity, &definition, transformation), SU_ERROR_NONE)
        << "placement " << i;
    EXPECT_EQ(sdk_id(entity), ruby_id(placement)) << "placement " << i;

    const VALUE ruby_definition = RU::vsu_get_definition(placement);
    EXPECT_EQ(sdk_id(SUComponentDefinitionToEntity(definition)), ruby_id(ruby_definition)) << "placement " << i;

    // The matrix is copied, not computed: every element comes through bit for bit.
    const VALUE values = rb_funcallv(rb_funcallv(placement, rb_intern("transformation"), 0, nullptr), rb_intern("to_a"), 0, nullptr);
    const double* copied = &transformation.x_axis.x;
    for (long k = 0; k < 16; ++k) {
      EXPECT_EQ(copied[k], NUM2DBL(rb_ary_entry(values, k))) << "placement " << i << " element " << k;
    }

    SUEntityRef alone = SU_INVALID;
    ASSERT_EQ(RU::vsu_to_csu_gci_entity(placement, &alone), SU_ERROR_NONE);
    EXPECT_EQ(alone.ptr, entity.ptr);
  }
  eval("$rm = $placements = nil");
}

TEST_F(EntityFinders, GroupOfDefinitionDecidesWhichListIsSearched) {
  const VALUE group_definition = eval("$g2.entities.parent");
  SUComponentDefinitionRef definition = SU_INVALID;
  ASSERT_EQ(RU::vsu_to_csu_component_definition(group_definition, &definition), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUComponentDefinitionToEntity(definition)), ruby_id(group_definition));
  EXPECT_EQ(su_standin_calls("SUModelGetNumComponentDefinitions"), 0u);

  su_standin_reset();
  ASSERT_EQ(RU::vsu_to_csu_component_definition(global("$leg"), &definition), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUComponentDefinitionToEntity(definition)), ruby_id(global("$leg")));
  EXPECT_EQ(su_standin_calls("SUModelGetNumGroupDefinitions"), 0u);

  // A definition claiming to be a group's is looked for among group definitions only.
  eval("$liar = $leg.dup; def $liar.group?; true; end");
  definition = sentinel<SUComponentDefinitionRef>();
  EXPECT_EQ(RU::vsu_to_csu_component_definition(global("$liar"), &definition), SU_ERROR_GENERIC);
  EXPECT_EQ(definition.ptr, sentinel<SUComponentDefinitionRef>().ptr);
  eval("$liar = nil");
}

TEST_F(EntityFinders, EveryFailingCallOfTheDefinitionListIsPassedOn) {
  for (const char* name : {"$leg", "$g3_definition"}) {
    eval("$g3_definition = $g3.entities.parent");
    SUComponentDefinitionRef definition = sentinel<SUComponentDefinitionRef>();
    const bool group = std::string(name) == "$g3_definition";
    expect_every_failure_passed_on(
        {"SUModelFromExisting", group ? "SUModelGetNumGroupDefinitions" : "SUModelGetNumComponentDefinitions",
         group ? "SUModelGetGroupDefinitions" : "SUModelGetComponentDefinitions"},
        [&] {
          definition = sentinel<SUComponentDefinitionRef>();
          return RU::vsu_to_csu_component_definition(global(name), &definition);
        },
        [&] { return definition.ptr == sentinel<SUComponentDefinitionRef>().ptr; });
  }
  eval("$g3_definition = nil");
}

TEST_F(EntityFinders, DefinitionWhoseIdCannotBeReadIsSkippedNotFatal) {
  // $chair is listed before $leg: its ID read fails, the walk goes on to $leg.
  su_standin_fail("SUEntityGetID", SU_ERROR_OUT_OF_RANGE, 1);
  SUComponentDefinitionRef definition = SU_INVALID;
  ASSERT_EQ(RU::vsu_to_csu_component_definition(global("$leg"), &definition), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(SUComponentDefinitionToEntity(definition)), ruby_id(global("$leg")));

  // When the one wanted is the one skipped, it is simply not found.
  su_standin_reset();
  su_standin_fail("SUEntityGetID", SU_ERROR_OUT_OF_RANGE, 1);
  definition = sentinel<SUComponentDefinitionRef>();
  EXPECT_EQ(RU::vsu_to_csu_component_definition(global("$chair"), &definition), SU_ERROR_GENERIC);
  EXPECT_EQ(definition.ptr, sentinel<SUComponentDefinitionRef>().ptr);
}

TEST_F(EntityFinders, NotFoundIsGenericAndLeavesOutputsAlone) {
  // Duck-typed stand-ins for entities: the finders only ask for model and entityID.
  eval(R"(
    $empty = Sketchup::Model.new
    $lost_in_empty = qm_fake(model: $empty, entityID: 1, "group?": false)
    $lost_in_full = qm_fake(model: $m, entityID: 987654, "group?": true)
  )");
  for (const char* name : {"$lost_in_empty", "$lost_in_full"}) {
    SUGroupRef group = sentinel<SUGroupRef>();
    EXPECT_EQ(RU::vsu_to_csu_group(global(name), &group), SU_ERROR_GENERIC) << name;
    EXPECT_EQ(group.ptr, sentinel<SUGroupRef>().ptr);
    SUComponentInstanceRef instance = sentinel<SUComponentInstanceRef>();
    EXPECT_EQ(RU::vsu_to_csu_component_instance(global(name), &instance), SU_ERROR_GENERIC) << name;
    EXPECT_EQ(instance.ptr, sentinel<SUComponentInstanceRef>().ptr);
    SUComponentDefinitionRef definition = sentinel<SUComponentDefinitionRef>();
    EXPECT_EQ(RU::vsu_to_csu_component_definition(global(name), &definition), SU_ERROR_GENERIC) << name;
    EXPECT_EQ(definition.ptr, sentinel<SUComponentDefinitionRef>().ptr);
  }
  eval("$empty = $lost_in_empty = $lost_in_full = nil");
}

TEST_F(EntityFinders, ModelIsTheAddressSkpdocReports) {
  SUModelRef model = SU_INVALID;
  EXPECT_EQ(RU::vsu_to_csu_model(global("$m"), &model), SU_ERROR_NONE);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(model.ptr), NUM2ULL(eval("$m.skpdoc(true)")));

  // skpdoc is asked with true, and nothing else is checked: an address that names no model
  // still answers 0 and leaves the rejection to the first SDK call.
  eval(R"(
    $fake = Object.new
    def $fake.skpdoc(flag); raise ArgumentError, "expected true" unless flag == true; 4096; end
  )");
  EXPECT_EQ(RU::vsu_to_csu_model(global("$fake"), &model), SU_ERROR_NONE);
  EXPECT_EQ(model.ptr, nullptr);
  eval("$fake = nil");
}

TEST_F(EntityFinders, EveryFailingCallOfTheGroupWalkIsPassedOn) {
  // $in_chair sits in a component definition, so the walk makes every call it can.
  SUGroupRef group = sentinel<SUGroupRef>();
  expect_every_failure_passed_on(
      {"SUModelFromExisting", "SUModelGetEntities", "SUEntitiesGetNumGroups", "SUEntitiesGetGroups",
       "SUGroupToEntity", "SUEntityGetID", "SUModelGetNumGroupDefinitions", "SUModelGetGroupDefinitions",
       "SUComponentDefinitionGetEntities", "SUModelGetNumComponentDefinitions",
       "SUModelGetComponentDefinitions"},
      [&] {
        group = sentinel<SUGroupRef>();
        return RU::vsu_to_csu_group(global("$in_chair"), &group);
      },
      [&] { return group.ptr == sentinel<SUGroupRef>().ptr; });
}

TEST_F(EntityFinders, EveryFailingCallOfTheInstanceWalkIsPassedOn) {
  SUComponentInstanceRef instance = sentinel<SUComponentInstanceRef>();
  expect_every_failure_passed_on(
      {"SUModelFromExisting", "SUModelGetEntities", "SUEntitiesGetNumInstances", "SUEntitiesGetInstances",
       "SUComponentInstanceToEntity", "SUEntityGetID", "SUModelGetNumGroupDefinitions",
       "SUModelGetGroupDefinitions", "SUComponentDefinitionGetEntities", "SUModelGetNumComponentDefinitions",
       "SUModelGetComponentDefinitions"},
      [&] {
        instance = sentinel<SUComponentInstanceRef>();
        return RU::vsu_to_csu_component_instance(global("$ci_in_chair"), &instance);
      },
      [&] { return instance.ptr == sentinel<SUComponentInstanceRef>().ptr; });
}

TEST_F(EntityFinders, EveryFailingCallOfTheInstancePartsIsPassedOn) {
  expect_every_parts_failure_passed_on(
      "$ci_in_chair", {"SUComponentInstanceGetDefinition", "SUComponentInstanceGetTransform", "SUEntitiesGetInstances"});
}

TEST_F(EntityFinders, EveryFailingCallOfTheGroupPartsIsPassedOn) {
  expect_every_parts_failure_passed_on("$g3", {"SUGroupGetDefinition", "SUGroupGetTransform", "SUEntityGetID"});
}

// A model larger than memory: each count the walk reads, in turn, is one no allocation can
// hold (its byte size overflows, or malloc answers null). The finders answer
// RU::ALLOCATION_FAILED and leave their outputs alone instead of ending the host.
TEST_F(EntityFinders, CountsNoMemoryHoldsFailWithoutTouchingOutputs) {
  const size_t sizes[] = {SIZE_MAX / 2, size_t{1} << 58};
  SUGroupRef group = SU_INVALID;
  for (const char* function :
       {"SUEntitiesGetNumGroups", "SUModelGetNumGroupDefinitions", "SUModelGetNumComponentDefinitions"}) {
    su_standin_reset();
    ASSERT_EQ(RU::vsu_to_csu_group(global("$in_chair"), &group), SU_ERROR_NONE);
    const size_t calls = su_standin_calls(function);
    for (size_t nth = 1; nth <= calls; ++nth) {
      for (size_t size : sizes) {
        su_standin_reset();
        su_standin_report_size(function, size, nth);
        group = sentinel<SUGroupRef>();
        EXPECT_EQ(RU::vsu_to_csu_group(global("$in_chair"), &group), RU::ALLOCATION_FAILED) << function << nth;
        EXPECT_EQ(group.ptr, sentinel<SUGroupRef>().ptr);
      }
    }
  }
  su_standin_reset();
  su_standin_report_size("SUModelGetNumComponentDefinitions", sizes[1], 1);
  SUComponentDefinitionRef definition = sentinel<SUComponentDefinitionRef>();
  EXPECT_EQ(RU::vsu_to_csu_component_definition(global("$chair"), &definition), RU::ALLOCATION_FAILED);
  EXPECT_EQ(definition.ptr, sentinel<SUComponentDefinitionRef>().ptr);
  su_standin_reset();
  su_standin_report_size("SUEntitiesGetNumInstances", sizes[0], 0);
  SUEntityRef entity = sentinel<SUEntityRef>();
  EXPECT_EQ(RU::vsu_to_csu_gci_entity(global("$ci_top"), &entity), RU::ALLOCATION_FAILED);
  EXPECT_EQ(entity.ptr, sentinel<SUEntityRef>().ptr);
  su_standin_reset();
}

TEST_F(EntityFinders, GciEntityTakesTheInstancePathOnlyForComponentInstances) {
  SUEntityRef entity = SU_INVALID;
  ASSERT_EQ(RU::vsu_to_csu_gci_entity(global("$ci_deep"), &entity), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(entity), ruby_id(global("$ci_deep")));
  EXPECT_EQ(su_standin_calls("SUEntitiesGetNumGroups"), 0u);

  su_standin_reset();
  ASSERT_EQ(RU::vsu_to_csu_gci_entity(global("$g2"), &entity), SU_ERROR_NONE);
  EXPECT_EQ(sdk_id(entity), ruby_id(global("$g2")));
  EXPECT_EQ(su_standin_calls("SUEntitiesGetNumInstances"), 0u);

  // Anything that is not a component instance is searched as a group: a definition is not found.
  su_standin_reset();
  entity = sentinel<SUEntityRef>();
  EXPECT_EQ(RU::vsu_to_csu_gci_entity(global("$chair"), &entity), SU_ERROR_GENERIC);
  EXPECT_EQ(entity.ptr, sentinel<SUEntityRef>().ptr);
  EXPECT_GT(su_standin_calls("SUEntitiesGetNumGroups"), 0u);
  EXPECT_EQ(su_standin_calls("SUEntitiesGetNumInstances"), 0u);
}

TEST_F(EntityFinders, RubyErrorsPropagateBeforeTheSdkIsTouched) {
  eval(R"(
    $raising_id = qm_fake(model: $m, "group?": false)
    def $raising_id.entityID; raise IOError, "no id"; end
    $string_id = qm_fake(model: $m, entityID: "7", "group?": false)
    $huge_id = qm_fake(model: $m, entityID: 2**40, "group?": false)
    $bad_model = qm_fake(model: Object.new, entityID: 1, "group?": false)
    $string_doc = qm_fake(model: qm_fake(skpdoc: "not an address"), entityID: 1, "group?": false)
  )");
  struct Case {
    const char* entity;
    const char* error;
  };
  for (const Case& c : {Case{"$raising_id", "IOError: no id"}, Case{"$string_id", "TypeError"},
                        Case{"$huge_id", "RangeError"}, Case{"$bad_model", "NoMethodError"},
                        Case{"$string_doc", "TypeError"}}) {
    const VALUE entity = global(c.entity);
    SUGroupRef group = sentinel<SUGroupRef>();
    SUComponentInstanceRef instance = sentinel<SUComponentInstanceRef>();
    SUComponentDefinitionRef definition = sentinel<SUComponentDefinitionRef>();
    EXPECT_EQ(qmtest::raised_by([&] { RU::vsu_to_csu_group(entity, &group); }).rfind(c.error, 0), 0u) << c.entity;
    EXPECT_EQ(qmtest::raised_by([&] { RU::vsu_to_csu_component_instance(entity, &instance); }).rfind(c.error, 0), 0u)
        << c.entity;
    EXPECT_EQ(qmtest::raised_by([&] { RU::vsu_to_csu_component_definition(entity, &definition); }).rfind(c.error, 0), 0u)
        << c.entity;
    EXPECT_EQ(group.ptr, sentinel<SUGroupRef>().ptr);
    EXPECT_EQ(instance.ptr, sentinel<SUComponentInstanceRef>().ptr);
    EXPECT_EQ(definition.ptr, sentinel<SUComponentDefinitionRef>().ptr);
  }
  // Every Ruby call comes first: none of the raising cases reached the entity walk.
  EXPECT_EQ(su_standin_calls("SUModelGetEntities"), 0u);
  EXPECT_EQ(su_standin_calls("SUModelGetNumComponentDefinitions"), 0u);
  eval("$raising_id = $string_id = $huge_id = $bad_model = $string_doc = nil");
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
  EXPECT_EQ(RU::vsu_get_definition(global("$ci_deep")), global("$chair"));
  EXPECT_EQ(RU::vsu_get_definition(global("$g3")), eval("$g2.entities.at(0).entities.parent"));
  EXPECT_TRUE(truthy("$g3.entities.parent.group?"));
  // A copy is answered through its own entities, identity plays no part.
  EXPECT_EQ(RU::vsu_get_definition(eval("$g3.dup")), eval("$g3.entities.parent"));
}

TEST_F(DefinitionOfPlacement, OldHostScansGroupDefinitionsForTheVeryObject) {
  host_version("13.0.4812");
  // The old host has no Entities#parent: a pass here proves the scan never leans on it.
  ASSERT_NE(qmtest::raised("$g1.entities.parent"), "");
  eval("HostStandin.version = '14.0'; $g3_definition = $g3.entities.parent; HostStandin.version = '13.0.4812'");
  EXPECT_EQ(RU::vsu_get_definition(global("$g3")), global("$g3_definition"));
  EXPECT_EQ(RU::vsu_get_definition(global("$in_chair")), eval("$m.definitions.find { |d| d.instances.include?($in_chair) }"));
  // Component instances still ask for their definition.
  EXPECT_EQ(RU::vsu_get_definition(global("$ci_in_chair")), global("$leg"));
  // Equal (same entity ID) but not the same object: not among any definition's instances.
  EXPECT_TRUE(truthy("$g3.dup == $g3"));
  EXPECT_EQ(RU::vsu_get_definition(eval("$g3.dup")), Qnil);
  eval("$g3_definition = nil");
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
  EXPECT_EQ(RU::vsu_get_definition(global("$gci")), global("$nil_group"));
  EXPECT_EQ(RU::vsu_get_definition(global("$orphan")), Qnil);
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
