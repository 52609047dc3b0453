# frozen_string_literal: true

# The example consumer, built against the installed package, loaded by a plain require.
#
#   QUILLMARK_CONSUMER_DIR  the folder holding quillmark_consumer.<dlext>

require "minitest/autorun"
require "fiddle"

require File.expand_path("../../platform/host_ruby/sketchup.rb", __dir__)
$LOAD_PATH.unshift(ENV.fetch("QUILLMARK_CONSUMER_DIR"))
require "quillmark_consumer"

# Under AddressSanitizer: a Ruby raise is a __builtin_longjmp that the sanitizer is not
# told about. The instrumented C++ frames it skips (the consumer's and the library's) would
# keep their stack redzones poisoned, and a later libc call the sanitizer intercepts could
# land on them and be reported. So every raise is announced to it as it happens, as the
# compiler itself does before a call that does not return.
begin
  no_return = Fiddle::Function.new(Fiddle::Handle::DEFAULT["__asan_handle_no_return"], [],
                                   Fiddle::TYPE_VOID)
  TracePoint.new(:raise) { no_return.call }.enable
rescue Fiddle::DLError
  nil # not instrumented
end

class ConsumerTest < Minitest::Test
  # The host's point transform, written out in the order the library evaluates it (column
  # by column, then times the reciprocal weight), so that the answers agree to the bit.
  def reference(values, point)
    x, y, z = point.to_a.map(&:to_f)
    f = values[15].abs > 1e-6 ? 1.0 / values[15] : 0.0
    (0..2).map { |r| ((((values[r] * x) + (values[4 + r] * y)) + (values[8 + r] * z)) + values[12 + r]) * f }
  end

  # Weights of one, other usable ones and unusable ones; every form a point can take.
  def random_case(rng, count)
    values = Array.new(16) { rng.rand(-10.0..10.0) }
    values[15] = [1.0, rng.rand(0.1..4.0), -2.5, 1e-7, 0.0].sample(random: rng)
    points = Array.new(count) do
      coords = Array.new(3) { rng.rand(-1e3..1e3) }
      [coords, Geom::Point3d.new(*coords), Geom::Vector3d.new(*coords)][rng.rand(3)]
    end
    [values, points]
  end

  # Short lists, one long enough to split across workers, and one with the collector running
  # at every allocation (the point buffer and the growing result must stay reachable); the
  # input is left alone.
  def test_every_point_matches_the_host_transform_in_order
    rng = Random.new(8)
    40.times do |round|
      values, points = random_case(rng, [20_000, 200][round] || rng.rand(0..300))
      before = points.map(&:to_a)
      GC.stress = round == 1
      result = QuillmarkConsumer.transform_points(Geom::Transformation.new(values), points)
      GC.stress = false
      assert_equal points.size, result.size
      result.each_with_index do |p, i|
        assert_kind_of Geom::Point3d, p
        assert_equal reference(values, points[i]), p.to_a, "round #{round}, point #{i}"
      end
      assert_equal before, points.map(&:to_a)
    end
    assert_equal [[11.0, 22.0, 33.0]], QuillmarkConsumer.transform_points([10, 20, 30], [[1, 2, 3]]).map(&:to_a)
    assert_equal [], QuillmarkConsumer.transform_points(Geom::Transformation.new, [])
  ensure
    GC.stress = false
  end

  def test_bad_input_raises_and_the_next_call_still_works
    t = Geom::Transformation.new
    assert_raises(TypeError) { QuillmarkConsumer.transform_points(t, Geom::Point3d.new(1, 2, 3)) }
    assert_raises(TypeError) { QuillmarkConsumer.transform_points("not one", [[1, 2, 3]]) }
    # A failure after many points were converted must not leave the buffer or the pool stuck.
    many = Array.new(500) { [1, 2, 3] }
    assert_raises(TypeError) { QuillmarkConsumer.transform_points(t, many + [[1, 2]]) }
    assert_raises(NoMethodError) { QuillmarkConsumer.transform_points(t, many + ["text"]) }
    assert_equal [[1.0, 2.0, 3.0]] * 500, QuillmarkConsumer.transform_points(t, many).map(&:to_a)
  end

  def live_typed_values
    @live_typed_values ||= Fiddle::Function.new(
      Fiddle::Handle::DEFAULT["su_standin_live_typed_values"], [], Fiddle::TYPE_SIZE_T
    )
    @live_typed_values.call
  end

  # Set on the Ruby side, read back through the SDK; every typed value the reader makes is
  # released, on the paths that find nothing or raise as well.
  def test_reads_number_attributes_through_the_sdk
    model = Sketchup.active_model
    group = model.entities.add_group
    instance = model.entities.add_instance(model.definitions.add("post"), Geom::Transformation.new)
    group.set_attribute("dimensions", "width", 2.5)
    group.set_attribute("dimensions", "count", 7)
    group.set_attribute("dimensions", "width", 3.75)
    instance.set_attribute("dimensions", "width", -0.125)
    before = live_typed_values
    assert_equal 3.75, QuillmarkConsumer.double_attribute(group, "dimensions", "width")
    assert_equal 7.0, QuillmarkConsumer.double_attribute(group, "dimensions", "count")
    assert_equal(-0.125, QuillmarkConsumer.double_attribute(instance, "dimensions", "width"))
    assert_nil QuillmarkConsumer.double_attribute(group, "dimensions", "depth")
    assert_nil QuillmarkConsumer.double_attribute(group, "other", "width")
    assert_nil QuillmarkConsumer.double_attribute(model.entities.add_group, "dimensions", "width")
    assert_raises(TypeError) { QuillmarkConsumer.double_attribute(group, :dimensions, "width") }
    assert_raises(ArgumentError) { QuillmarkConsumer.double_attribute(group, "dimensions", "wi\0dth") }
    assert_equal before, live_typed_values
  end
end
