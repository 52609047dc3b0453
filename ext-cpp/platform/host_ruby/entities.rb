# frozen_string_literal: true

# The host's model and entity classes, backed by the C SDK stand-in (libquillmark_sketchup_api)
# through Fiddle: every model, definition, group and component instance made here is made in
# the stand-in's in-memory model as well, so the Ruby side and the SDK side report the same
# entity IDs and the same structure.
#
# The SDK library must be loaded in the process (a test binary or the bundle links it) or
# named with HostStandin.sketchup_api_path before the first model is made.

require "fiddle"

module HostStandin
  # Entities#parent first appeared with this host version; older hosts lack it.
  ENTITIES_PARENT_SINCE = 14

  class << self
    # Path of the SDK stand-in library, for a process that has not loaded it already.
    attr_accessor :sketchup_api_path
  end

  # The stand-in's builder and the few SDK calls the Ruby side needs. References are structs
  # of one pointer, which the C calling convention passes like a plain pointer.
  module SketchupApi
    P = Fiddle::TYPE_VOIDP
    I = Fiddle::TYPE_INT
    V = Fiddle::TYPE_VOID

    SIGNATURES = {
      su_standin_model_create: [[], P],
      su_standin_model_release: [[P], V],
      su_standin_add_component_definition: [[P, P], P],
      su_standin_add_group: [[P], P],
      su_standin_add_instance: [[P, P], P],
      su_standin_set_transform: [[P, P], I],
      SUModelGetEntities: [[P, P], I],
      SUComponentDefinitionGetEntities: [[P, P], I],
      SUGroupGetDefinition: [[P, P], I],
      SUGroupToEntity: [[P], P],
      SUComponentInstanceToEntity: [[P], P],
      SUComponentDefinitionToEntity: [[P], P],
      SUEntityGetID: [[P, P], I],
      su_standin_add_dictionary: [[P, P], P],
      su_standin_dictionary_set: [[P, P, P], I],
      SUTypedValueCreate: [[P], I],
      SUTypedValueRelease: [[P], I],
      SUTypedValueSetDouble: [[P, Fiddle::TYPE_DOUBLE], I],
      SUTypedValueSetInt32: [[P, I], I]
    }.freeze

    class << self
      def call(name, *args)
        function(name).call(*args)
      end

      # An address for a reference answered through an out-parameter.
      def out_ref(name, *args)
        out = Fiddle::Pointer.malloc(Fiddle::SIZEOF_VOIDP, Fiddle::RUBY_FREE)
        call!(name, *args, out)
        out.ptr.to_i
      end

      def entity_id(entity_address)
        out = Fiddle::Pointer.malloc(4, Fiddle::RUBY_FREE)
        call!(:SUEntityGetID, entity_address, out)
        out[0, 4].unpack("l").first
      end

      # Calls name and raises unless it answers SU_ERROR_NONE.
      def call!(name, *args)
        check(name, call(name, *args))
      end

      def address(pointer)
        pointer.to_i.tap { |value| raise "SDK stand-in gave an invalid reference" if value.zero? }
      end

      private

      def check(name, result)
        raise "#{name} failed with #{result}" unless result.zero?
      end

      def function(name)
        (@functions ||= {})[name] ||= begin
          args, ret = SIGNATURES.fetch(name)
          Fiddle::Function.new(handle[name.to_s], args, ret)
        end
      end

      def handle
        @handle ||= begin
          Fiddle::Handle::DEFAULT["su_standin_model_create"]
          Fiddle::Handle::DEFAULT
        rescue Fiddle::DLError
          path = HostStandin.sketchup_api_path
          raise LoadError, "the SDK stand-in is not loaded; set HostStandin.sketchup_api_path" unless path

          Fiddle::Handle.new(path)
        end
      end
    end
  end
end

module Sketchup
  @active_model = nil

  # What the host's collections answer: a length and the items by position, in order made.
  module Listing
    include Enumerable

    def length
      @items.length
    end
    alias size length
    alias count length

    def at(index)
      @items.at(index)
    end

    def each(&block)
      @items.each(&block)
    end

    def to_a
      @items.dup
    end
  end

  def self.active_model
    @active_model ||= Model.new
  end

  class Entity
    attr_reader :model, :entityID

    # Entities compare by ID, like the host's; only identity tells a copy from the original.
    def ==(other)
      other.is_a?(Entity) && other.model.equal?(model) && other.entityID == entityID
    end

    def inspect
      "#<#{self.class}:#{entityID}>"
    end

    private

    def bind(model, entity_address)
      @model = model
      @entityID = HostStandin::SketchupApi.entity_id(entity_address)
    end
  end

  class Model
    attr_reader :entities, :definitions

    def initialize
      api = HostStandin::SketchupApi
      @address = api.address(api.call(:su_standin_model_create))
      ObjectSpace.define_finalizer(self, Model.releaser(@address))
      @entities = Entities.new(self, api.out_ref(:SUModelGetEntities, @address), self)
      @definitions = DefinitionList.new(self)
    end

    def self.releaser(address)
      proc { HostStandin::SketchupApi.call(:su_standin_model_release, address) }
    end

    # The address of the SDK model, which the SDK takes back with SUModelFromExisting.
    def skpdoc(_as_address = true)
      @address
    end

    def active_entities
      @entities
    end

    def inspect
      "#<Sketchup::Model:0x#{@address.to_s(16)}>"
    end
  end

  class DefinitionList
    include Listing

    def initialize(model)
      @model = model
      @items = []
    end

    def add(name)
      api = HostStandin::SketchupApi
      address = api.address(api.call(:su_standin_add_component_definition, @model.skpdoc(true), "#{name}\0"))
      ComponentDefinition.new(@model, address, false, name.to_s).tap { |d| @items << d }
    end

    def [](key)
      key.is_a?(Integer) ? @items[key] : @items.find { |d| d.name == key }
    end

    # Group definitions are listed too, as the host lists them.
    def register(definition)
      @items << definition
    end
  end

  class Entities
    include Listing
    attr_reader :model

    def initialize(model, address, parent)
      @model = model
      @address = address
      @parent = parent
      @items = []
    end

    # The model for its top-level entities, else the definition that owns them.
    def parent
      if HostStandin.version.to_i < HostStandin::ENTITIES_PARENT_SINCE
        raise NoMethodError.new("undefined method `parent' for #{inspect} on host #{HostStandin.version}",
                                :parent)
      end
      @parent
    end

    def add_group
      api = HostStandin::SketchupApi
      address = api.address(api.call(:su_standin_add_group, @address))
      definition = ComponentDefinition.new(@model, api.out_ref(:SUGroupGetDefinition, address), true, "Group")
      @model.definitions.register(definition)
      Group.new(@model, address, definition).tap { |group| add(group) }
    end

    def add_instance(definition, transformation = nil)
      api = HostStandin::SketchupApi
      address = api.address(api.call(:su_standin_add_instance, @address, definition.sdk_address))
      instance = ComponentInstance.new(@model, address, definition)
      instance.transformation = transformation if transformation
      add(instance)
      instance
    end

    def [](index)
      @items[index]
    end

    def inspect
      "#<Sketchup::Entities:#{@items.length}>"
    end

    private

    def add(placement)
      @items << placement
      placement.definition_for_bridge.placed(placement)
    end
  end

  class ComponentDefinition
    attr_reader :name, :entities

    def initialize(model, address, group, name)
      @address = address
      @group = group
      @name = name
      @instances = []
      bind(model, HostStandin::SketchupApi.call(:SUComponentDefinitionToEntity, address))
      @entities = Entities.new(model, HostStandin::SketchupApi.out_ref(:SUComponentDefinitionGetEntities, address),
                               self)
    end

    def group?
      @group
    end

    # A new Array each call, as the host answers.
    def instances
      @instances.dup
    end

    def count_instances
      @instances.length
    end

    def sdk_address
      @address
    end

    def placed(placement)
      @instances << placement
    end
  end

  # What groups and component instances share: a definition and a transformation.
  module Placement
    def transformation
      @transformation ||= Geom::Transformation.new
    end

    def transformation=(value)
      value = Geom::Transformation.new(value) unless value.is_a?(Geom::Transformation)
      values = value.to_a.map(&:to_f)
      raise ArgumentError, "expected 16 values" unless values.length == 16

      matrix = Fiddle::Pointer.malloc(16 * 8, Fiddle::RUBY_FREE)
      matrix[0, 16 * 8] = values.pack("d16")
      HostStandin::SketchupApi.call(:su_standin_set_transform, @entity_address, matrix)
      @transformation = value
    end

    # Stores value under key in this entity's dictionary of that name, made on first use, as
    # the host does. The stand-in keeps Float values as doubles and Integer values as 32-bit
    # integers; other values raise TypeError, integers beyond 32 bits RangeError.
    def set_attribute(dictionary_name, key, value)
      setter =
        case value
        when Float then :SUTypedValueSetDouble
        when Integer
          raise RangeError, "#{value} does not fit in 32 bits" unless value.bit_length < 32

          :SUTypedValueSetInt32
        else raise TypeError, "the host stand-in stores Float and Integer attributes only"
        end
      api = HostStandin::SketchupApi
      name = dictionary_name.to_s
      dictionary = (@dictionaries ||= {})[name] ||=
        api.address(api.call(:su_standin_add_dictionary, @entity_address, "#{name}\0"))
      typed_value = api.out_ref(:SUTypedValueCreate)
      begin
        api.call!(setter, typed_value, value)
        api.call!(:su_standin_dictionary_set, dictionary, "#{key}\0", typed_value)
      ensure
        handle = Fiddle::Pointer.malloc(Fiddle::SIZEOF_VOIDP, Fiddle::RUBY_FREE)
        # An unsigned long is pointer-sized on the 64-bit platforms the host runs on.
        handle[0, Fiddle::SIZEOF_VOIDP] = [typed_value].pack("L!")
        api.call!(:SUTypedValueRelease, handle)
      end
      value
    end

    def definition_for_bridge
      @definition
    end

    private

    def bind_placement(model, address, definition, to_entity)
      @definition = definition
      @entity_address = HostStandin::SketchupApi.call(to_entity, address).to_i
      bind(model, @entity_address)
    end
  end

  class Group
    include Placement

    def initialize(model, address, definition)
      bind_placement(model, address, definition, :SUGroupToEntity)
    end

    def entities
      @definition.entities
    end
  end

  class ComponentInstance
    include Placement

    def initialize(model, address, definition)
      bind_placement(model, address, definition, :SUComponentInstanceToEntity)
    end

    attr_reader :definition
  end
end
