-- Makes an Ardour session as a user would: a stereo track, four seconds recorded from the dummy
-- backend's sweep, the plug-in (the LV2 with a preset that has a seed), and steps of automation for
-- three controls.
--   ardour-make.lua FOLDER FORMAT BUFFER
local folder, format, buffer = arg[1], arg[2], tonumber(arg[3])
local rate = 48000

local function at(samples) return Temporal.timepos_t(samples) end

local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_device_name("Sine Sweep Swell")
backend:set_sample_rate(rate)
backend:set_buffer_size(buffer)
local session = create_session(folder, "try", rate)
assert(session, "Ardour makes no session in " .. folder)
session:add_master_bus(ARDOUR.ChanCount(ARDOUR.DataType("audio"), 2))
local track = session:new_audio_track(2, 2, nil, 1, "Voice", ARDOUR.PresentationInfo.max_order,
                                      ARDOUR.TrackMode.Normal, true):front()

if format == "LV2" then
    -- Ardour tells an LV2 that has a MIDI input where the song is only where that input is connected.
    track:input():add_port("", nil, ARDOUR.DataType("midi"))
end

-- Half a second of silence first, so that all that starts has settled.
session:request_locate(rate // 2, false, ARDOUR.LocateTransportDisposition.MustStop,
                       ARDOUR.TransportRequestSource.TRS_UI)
sleep(1)
track:rec_enable_control():set_value(1, PBD.GroupControlDisposition.NoGroup)
session:maybe_enable_record()
session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
sleep(4)
session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
sleep(1)
track:rec_enable_control():set_value(0, PBD.GroupControlDisposition.NoGroup)
local regions = track:playlist():region_list()
assert(regions:size() == 1, "Ardour has recorded nothing")
local region
for one in regions:iter() do region = one end
region:to_audioregion():set_fade_in_active(false)
region:to_audioregion():set_fade_out_active(false)
print("REGION", region:position():samples(), region:length():samples())

local kinds = {LV2 = {ARDOUR.PluginType.LV2, "urn:quorvan:tesserae"},
               VST3 = {ARDOUR.PluginType.VST3, "2046504473616C637273745100000000"}}
local processor = ARDOUR.LuaAPI.new_plugin(session, kinds[format][2], kinds[format][1], "")
assert(not processor:isnil(), "Ardour does not find the " .. format)
assert(track:add_processor_by_index(processor, 0, nil, true) == 0)
local insert = processor:to_insert()
local plugin = insert:plugin(0)
if format == "LV2" then
    local preset = plugin:preset_by_label("Try")
    assert(preset.valid, "Ardour does not find the preset")
    assert(plugin:load_preset(preset))
    sleep(1)
end

-- In ticks of 12.5 frames, by which Ardour keeps automation, most of them inside a buffer.
local steps = {["Dry / Wet"] = {{0, 50}, {2302, 75}, {4738, 25}, {9598, 100}},
               ["Pitch"] = {{0, 0}, {2690, 9}, {6824, -18}, {11134, 0}},
               ["Freeze"] = {{0, 0}, {5762, 1}, {8450, 0}}}
local found = 0
for n = 0, plugin:parameter_count() - 1 do
    local id = plugin:nth_parameter(n, true)
    local points = plugin:parameter_is_input(id) and steps[plugin:parameter_label(id)]
    if points then
        found = found + 1
        local _, list = ARDOUR.LuaAPI.plugin_automation(processor, n)
        local control = insert:to_automatable():automation_control(
            Evoral.Parameter(ARDOUR.AutomationType.PluginAutomation, 0, id), false)
        list:set_interpolation(Evoral.InterpolationStyle.Discrete)
        for _, point in ipairs(points) do
            list:add(at(point[1] * 25 // 2), point[2], false, true)
        end
        control:set_automation_state(ARDOUR.AutoState.Play)
    end
end
assert(found == 3, "Ardour does not show the three controls")
session:save_state("")
close_session()
quit()
