-- Wireshark dissector for KTC, the command protocol of the lidar sensors that Varkel configures.
--
-- Put this file into Wireshark's folder of personal Lua plugins (Help > About > Folders), or load it once
-- with "tshark -X lua_script:FILE". KTC is expected on the TCP ports in the preference "KTC > TCP ports"; the
-- preference "KTC > Model" selects the model whose variables are decoded.
--
-- The tables of the models replace the line "local models" below. A model is
--   {name = "Quenta", key = "quenta", variables = {...}, commands = {...}}
-- and one of its variables is
--   {key = "motor_speed", name = "Motor Speed (rpm)", type = "uint16", length = 2, scale = 1, set_scale = 1,
--    labels = {[0] = "Off"}}
-- where the length is in bytes, -1 for the rest of the payload; "scale" is for replies, "set_scale" for set
-- requests. The keys of the commands are their codes in hexadecimal, "05", or "ff01000101" for a four-byte
-- code:
--   {name = "Motor State and 4 more", reads = {{1, 0}, {2, 1}}, writes = {...}, read_size = 3, write_size = 3,
--    is_upgrade = true, is_fov = true}
-- with pairs of a variable's number and the position of its first byte in the payload of the reply or the set
-- request. A third element, in hexadecimal, is the payload of the only request whose reply holds the
-- variable.
local models = {}

local ktc = Proto("ktc", "KTC lidar commands")
local serial = Proto("ktcserial", "Small lidar sensor, serial frames")

local DEFAULT_PORTS = "9347-9348" -- 9348: recordings of serial lines
-- The largest payload length: the tool gives up on a reply after this many bytes.
local MAX_PAYLOAD = 64 * 1024 * 1024
-- The number of requests that may wait for a reply in one stream; older ones have been given up.
local MAX_PENDING = 64
-- Requests up to this size are kept: the meaning of some replies depends on their request.
local MAX_KEPT_REQUEST = 16

-- The positions of the header's fields, by the identifier at its beginning.
local HEADERS = {
  Gt = {version = 1, size = 8, command = 2, return_code = 3, length = 4},
  Wu = {version = 2, size = 12, command = 3, return_code = 4, length = 8},
}
local COMMAND_TAG, FIRMWARE_TAG = "$LDCMD,", "$LDOTA,"
local STARTS = {"Gt", "Wu", COMMAND_TAG, FIRMWARE_TAG}
local EXTENSION = 0xFF -- the command byte of four-byte codes, and of the serial line behind the sensor
local PIECE_HEADER, MAX_PIECE = 16, 1024

-- ---------------------------------------------------------------------------------------------------------------
-- Fields

local f = {
  version = ProtoField.uint8("ktc.version", "Version"),
  command = ProtoField.uint8("ktc.command", "Command", base.HEX),
  code = ProtoField.uint32("ktc.extended_command", "Four-byte command", base.HEX),
  return_code = ProtoField.uint8("ktc.return_code", "Return code"),
  length = ProtoField.uint32("ktc.length", "Payload length"),
  payload = ProtoField.bytes("ktc.payload", "Payload"),
  noise = ProtoField.bytes("ktc.noise", "Bytes outside of frames"),
  reply_in = ProtoField.framenum("ktc.response_in", "Reply in", base.NONE, frametype.RESPONSE),
  reply_to = ProtoField.framenum("ktc.response_to", "Reply to", base.NONE, frametype.REQUEST),
  time = ProtoField.relative_time("ktc.response_time", "Response time"),
  fov_start = ProtoField.double("ktc.fov_start", "Start angle (deg)"),
  fov_end = ProtoField.double("ktc.fov_end", "End angle (deg)"),
  piece = ProtoField.uint32("ktc.piece", "Piece"),
  pieces = ProtoField.uint32("ktc.pieces", "Pieces"),
  piece_crc = ProtoField.uint32("ktc.piece_crc", "CRC of the piece", base.HEX),
  piece_data = ProtoField.bytes("ktc.piece_data", "Data of the piece"),
  line = ProtoField.uint16("ktc.line", "Serial line", base.HEX, {[1] = "baud rate", [2] = "frame"}),
  baud_rate = ProtoField.uint32("ktc.baud_rate", "Baud rate"),
}

local s = {
  tag = ProtoField.string("ktcserial.tag", "Tag"),
  length = ProtoField.uint8("ktcserial.length", "Length"),
  code = ProtoField.uint8("ktcserial.code", "Code", base.DEC, {[2] = "get", [3] = "set"}),
  item = ProtoField.uint8("ktcserial.item", "Item"),
  contents = ProtoField.bytes("ktcserial.contents", "Contents"),
  status = ProtoField.uint8("ktcserial.status", "Status"),
  text = ProtoField.string("ktcserial.text", "Text"),
  safety = ProtoField.uint8("ktcserial.safety_state", "Safety state", base.DEC,
    {[0] = "normal", [1] = "warning", [2] = "shutdown"}),
  fault = ProtoField.uint16("ktcserial.fault_code", "Fault code"),
  frame_type = ProtoField.uint8("ktcserial.type", "Frame type", base.HEX, {
    [0x01] = "start", [0x02] = "block", [0x03] = "end",
    [0x11] = "start of a component", [0x12] = "block of a component", [0x13] = "end of a component",
  }),
  first = ProtoField.uint32("ktcserial.first", "First value", base.DEC_HEX),
  second = ProtoField.uint32("ktcserial.second", "Second value", base.DEC_HEX),
  data_length = ProtoField.uint32("ktcserial.data_length", "Data length"),
  data = ProtoField.bytes("ktcserial.data", "Data"),
  nonce = ProtoField.uint32("ktcserial.nonce", "Nonce", base.HEX),
  crc = ProtoField.uint32("ktcserial.crc", "CRC", base.HEX),
}

local function info(name, text, group, severity)
  return ProtoExpert.new(name, text, group, severity)
end

local e = {
  refused = info("ktc.refused", "The sensor refused the command", expert.group.RESPONSE_CODE, expert.severity.WARN),
  unknown = info("ktc.unknown", "The model's table has no such command", expert.group.UNDECODED,
    expert.severity.NOTE),
  short = info("ktc.short", "The payload is shorter than its variables", expert.group.MALFORMED,
    expert.severity.ERROR),
  long = info("ktc.long", "The payload is longer than its variables", expert.group.PROTOCOL, expert.severity.WARN),
  huge = info("ktc.huge", "More payload is announced than any tool reads", expert.group.MALFORMED,
    expert.severity.ERROR),
  cut = info("ktc.cut", "The frame is cut off", expert.group.MALFORMED, expert.severity.ERROR),
  noise = info("ktc.noise_seen", "Bytes that belong to no frame", expert.group.PROTOCOL, expert.severity.WARN),
  stray = info("ktc.stray", "Unsolicited reply", expert.group.SEQUENCE, expert.severity.WARN),
  piece = info("ktc.piece_crc_wrong", "The CRC of the piece is wrong", expert.group.CHECKSUM, expert.severity.ERROR),
  type = info("ktc.field_size", "The field's length does not fit its type", expert.group.PROTOCOL,
    expert.severity.WARN),
}

local se = {
  crc = info("ktcserial.crc_wrong", "The CRC is wrong", expert.group.CHECKSUM, expert.severity.ERROR),
  trailer = info("ktcserial.trailer", "The trailer EE FF is missing", expert.group.MALFORMED, expert.severity.ERROR),
  length = info("ktcserial.length_wrong", "The length byte does not fit the frame", expert.group.MALFORMED,
    expert.severity.ERROR),
  refused = info("ktcserial.refused", "The small sensor refused", expert.group.RESPONSE_CODE, expert.severity.WARN),
}

local function values(map)
  local list = {}
  for _, value in pairs(map) do list[#list + 1] = value end
  return list
end

-- ---------------------------------------------------------------------------------------------------------------
-- CRC-32/MPEG-2

-- Exclusive or has been written in three ways in Lua; which one works depends on Wireshark's Lua.
local xor = bit32 and bit32.bxor
if not xor and bit then
  local signed_xor = bit.bxor
  xor = function(a, b) return signed_xor(a, b) % 0x100000000 end
end
xor = xor or load("return function(a, b) return a ~ b end")()

local crc_table = {}
for byte = 0, 255 do
  local crc = byte * 0x1000000
  for _ = 1, 8 do
    local doubled = crc * 2 % 0x100000000
    crc = crc >= 0x80000000 and xor(doubled, 0x04C11DB7) or doubled
  end
  crc_table[byte] = crc
end

local floor = math.floor

local function crc32(text)
  local crc = 0xFFFFFFFF
  for i = 1, #text do
    crc = xor(crc % 0x1000000 * 256, crc_table[xor(floor(crc / 0x1000000), text:byte(i))])
  end
  return crc
end

-- Serial frames count zero bytes up to a multiple of 4, which are not sent.
local function padded_crc32(text)
  return crc32(text .. ("\0"):rep(-#text % 4))
end

-- ---------------------------------------------------------------------------------------------------------------
-- Variables: each type reads a field as the value that filters compare, and the text that the tool shows for it (nil
-- where Wireshark's own is the same). A field whose length does not fit gives nothing.

local INTEGERS = {
  uint8 = {size = 1}, uint16 = {size = 2}, uint32 = {size = 4}, uint64 = {size = 8},
  int8 = {size = 1, signed = true}, int16 = {size = 2, signed = true}, int32 = {size = 4, signed = true},
  int64 = {size = 8, signed = true},
}
local WORD = 0x100000000 -- the values of 32 bits

-- Up to 4 bytes as a number.
local function small_integer(range, signed)
  local value = range:uint()
  local values_of_range = 256 ^ range:len()
  return signed and value >= values_of_range / 2 and value - values_of_range or value
end

-- Up to 8 bytes as a 64-bit number; a Lua number can hold each half of it exactly.
local function big_integer(range, signed)
  local length = range:len()
  local high, low
  if length > 4 then
    high = small_integer(range(0, length - 4), signed)
    low = range(length - 4, 4):uint()
  else
    low = small_integer(range, signed)
    high = low < 0 and -1 or 0
    low = low % WORD
  end
  return (signed and Int64 or UInt64).new(low, high % WORD)
end

-- Of wider fields the last bytes are used, narrower ones are sign-extended.
local function read_integer(range, kind)
  local length = range:len()
  if length > kind.size then range = range(length - kind.size, kind.size) end
  if kind.size <= 4 then return small_integer(range, kind.signed) end
  return big_integer(range, kind.signed)
end

local function read_real(size)
  return function(range, scale)
    local length = range:len()
    if length < size then return nil end
    local value = range(length - size, size):float() * scale
    return value, ("%.2f"):format(value)
  end
end

local function dotted(range)
  return (range:bytes():raw():gsub(".", function(byte) return byte:byte() .. "." end):sub(1, -2))
end

local function without_padding(range)
  return (range:string(ENC_UTF_8):gsub("%z+$", ""))
end

-- Bytes up to and including 0x10 have a leading zero, as the tool shows them.
local function mac_text(range)
  local parts = {}
  for i = 0, 5 do
    local byte = range(i, 1):uint()
    parts[#parts + 1] = (byte <= 0x10 and "0%X" or "%X"):format(byte)
  end
  return table.concat(parts, ":")
end

local function duration(range)
  local length = range:len()
  if length > 8 then range = range(length - 8, 8) end
  local seconds = big_integer(range, false)
  local text = tostring(seconds / 3600) .. " h " .. tostring(seconds % 3600 / 60) .. " min " ..
    tostring(seconds % 60) .. " s"
  return seconds, text
end

local READERS = {
  float32 = read_real(4),
  double = read_real(8),
  DT = duration,
  string = without_padding,
  IP = function(range)
    return range:len() == 4 and range:ipv4() or nil, dotted(range)
  end,
  MAC = function(range)
    if range:len() < 6 then return nil end
    return range(0, 6):ether(), mac_text(range)
  end,
  HWVER = function(range)
    if range:len() ~= 16 then return nil end
    return without_padding(range(0, 8)) .. " " .. dotted(range(8, 4)) .. " (" .. range(12, 4):uint() .. ")"
  end,
  SWVER_YMD = function(range)
    if range:len() ~= 8 then return nil end
    return ("%s (%04d-%02d-%02d)"):format(dotted(range(0, 4)), range(4, 2):uint(), range(6, 1):uint(),
      range(7, 1):uint())
  end,
}

local function is_scaled(variable)
  return INTEGERS[variable.type] and ((variable.scale or 1) ~= 1 or (variable.set_scale or 1) ~= 1)
end

-- The reader of a variable: range and scale in, value and text out. Nil for types without text.
local function reader_of(variable)
  local kind = INTEGERS[variable.type]
  if not kind then return READERS[variable.type] end
  if not is_scaled(variable) then
    return function(range) return read_integer(range, kind) end
  end
  return function(range, scale)
    local raw = read_integer(range, kind)
    local number = type(raw) == "number" and raw or raw:tonumber()
    if scale == 1 then return number, tostring(raw) end
    return number * scale, ("%.2f"):format(number * scale)
  end
end

local function field_of(variable, model)
  local abbreviation = "ktc." .. model.key .. "." .. variable.key
  local kind = variable.type
  if is_scaled(variable) or kind == "float32" or kind == "double" then
    return ProtoField.double(abbreviation, variable.name)
  elseif INTEGERS[kind] then
    return ProtoField[kind](abbreviation, variable.name, base.DEC, variable.labels)
  elseif kind == "DT" then
    return ProtoField.uint64(abbreviation, variable.name)
  elseif kind == "IP" and variable.length == 4 then
    return ProtoField.ipv4(abbreviation, variable.name)
  elseif kind == "MAC" then
    return ProtoField.ether(abbreviation, variable.name)
  elseif kind == "string" or kind == "HWVER" or kind == "SWVER_YMD" then
    return ProtoField.string(abbreviation, variable.name)
  end
  return ProtoField.bytes(abbreviation, variable.name)
end

local ktc_fields = values(f)
for _, model in ipairs(models) do
  for _, variable in ipairs(model.variables) do
    variable.field = field_of(variable, model)
    variable.read = reader_of(variable)
    ktc_fields[#ktc_fields + 1] = variable.field
  end
end
ktc.fields = ktc_fields
ktc.experts = values(e)
serial.fields = values(s)
serial.experts = values(se)

local function add_variable(tree, variable, range, scale)
  if not variable.read then
    tree:add(variable.field, range)
    return
  end
  local value, text = variable.read(range, scale)
  if value == nil then
    tree:add(f.payload, range):set_text(variable.name .. ": " .. (text or tostring(range:bytes())))
      :add_proto_expert_info(e.type)
  elseif text then
    tree:add(variable.field, range, value):set_text(variable.name .. ": " .. text)
  else
    tree:add(variable.field, range, value)
  end
end

-- ---------------------------------------------------------------------------------------------------------------
-- Preferences

local choices = {}
for i, model in ipairs(models) do choices[i] = {model.key, model.name, i} end
ktc.prefs.ports = Pref.range("TCP ports", DEFAULT_PORTS, "Ports of the sensors", 65535)
if #choices > 0 then
  ktc.prefs.model = Pref.enum("Model", 1, "Whose variables the payloads hold", choices, false)
end

local sensor_ports = {}
local registered_ports

local function use_ports()
  local ports = tostring(ktc.prefs.ports)
  if ports == registered_ports then return end
  local table_of_ports = DissectorTable.get("tcp.port")
  if registered_ports and registered_ports ~= "" then table_of_ports:remove(registered_ports, ktc) end
  if ports ~= "" then table_of_ports:add(ports, ktc) end
  registered_ports = ports
  sensor_ports = {}
  for first, last in ports:gmatch("(%d+)%-?(%d*)") do
    for port = tonumber(first), tonumber(last) or tonumber(first) do sensor_ports[port] = true end
  end
end

function ktc.prefs_changed()
  use_ports()
end

local function chosen_model()
  return models[ktc.prefs.model or 0]
end

-- ---------------------------------------------------------------------------------------------------------------
-- Requests and their replies

local streams = {}   -- by both endpoints: which one is the client, and its pending requests
local exchanges = {} -- by the position of a frame: its exchange
local MAX_OFFSET = 2 ^ 27 -- a position is the packet's number and the offset in the reassembled bytes

function ktc.init()
  streams = {}
  exchanges = {}
end

local function sender(pinfo)
  return tostring(pinfo.src) .. " " .. pinfo.src_port
end

local function receiver(pinfo)
  return tostring(pinfo.dst) .. " " .. pinfo.dst_port
end

local function stream_state(pinfo)
  local from, to = sender(pinfo), receiver(pinfo)
  local key = from < to and from .. to or to .. from
  local state = streams[key]
  if not state then
    state = {pending = {}, client = from}
    streams[key] = state
  end
  return state
end

-- Frames to a sensor's port are requests; if neither port is one, the side that sent first is the client.
local function is_request(pinfo)
  local to_sensor, from_sensor = sensor_ports[pinfo.dst_port], sensor_ports[pinfo.src_port]
  if to_sensor ~= from_sensor then return to_sensor == true end
  return sender(pinfo) == stream_state(pinfo).client
end

-- Takes the oldest request with that command; those before it got no reply.
local function take_pending(pending, command)
  for i, exchange in ipairs(pending) do
    if exchange.command == command then
      for _ = 1, i do table.remove(pending, 1) end
      return exchange
    end
  end
  return nil
end

-- Frames are dissected several times and in any order, but the first time always in capture order.
local function exchange_of(frame, pinfo)
  local place = pinfo.number * MAX_OFFSET + frame.tvb:offset() + frame.offset
  if pinfo.visited then return exchanges[place] end
  local pending = stream_state(pinfo).pending
  local exchange
  if frame.is_request then
    exchange = {command = frame.command, asked_in = pinfo.number, asked_at = pinfo.rel_ts}
    local size = frame.payload_size
    exchange.payload = size > 0 and size <= MAX_KEPT_REQUEST and frame.tvb:raw(frame.payload, size) or ""
    pending[#pending + 1] = exchange
    if #pending > MAX_PENDING then table.remove(pending, 1) end
  else
    exchange = take_pending(pending, frame.command)
    if exchange then exchange.answered_in, exchange.answered_at = pinfo.number, pinfo.rel_ts end
  end
  exchanges[place] = exchange
  return exchange
end

local function add_exchange(tree, frame, exchange)
  if not frame.is_shown and (frame.is_request or exchange) then return end
  if frame.is_request then
    if exchange and exchange.answered_in then tree:add(f.reply_in, exchange.answered_in):set_generated() end
    return
  end
  if not exchange then
    tree:add_proto_expert_info(e.stray)
    return
  end
  tree:add(f.reply_to, exchange.asked_in):set_generated()
  local seconds = math.max(0, exchange.answered_at - exchange.asked_at)
  local whole = floor(seconds)
  tree:add(f.time, NSTime.new(whole, floor((seconds - whole) * 1e9 + 0.5))):set_generated()
end

-- ---------------------------------------------------------------------------------------------------------------
-- Serial frames

-- The size of the frame that begins at `offset`; nil while too few of its bytes have come.
local function serial_frame_size(tvb, offset, available, is_firmware, asks)
  if is_firmware and asks then
    return available >= 23 and 29 + tvb(offset + 19, 4):uint() or nil
  end
  if available < 8 then return nil end
  local length = tvb(offset + 7, 1):uint()
  if asks then return 18 + (length == 0 and 256 or length) end -- the length byte counts modulo 256
  return 19 + length
end

local function add_get_contents(tree, tvb, offset, size)
  local item = tvb(offset, 1):uint()
  -- Byte 4 of a reply's body is the third of its contents.
  if size < 3 then return end
  if item == 10 or item == 15 then
    local length = math.min(size - 2, item == 15 and 24 or size)
    local range = tvb(offset + 2, length)
    tree:add(s.text, range, without_padding(range))
  elseif item == 8 then
    tree:add(s.safety, tvb(offset + 2, 1))
    for at = 3, size - 2, 2 do tree:add_le(s.fault, tvb(offset + at, 2)) end
  end
end

local function add_status(tree, range)
  local item = tree:add(s.status, range)
  if range:uint() ~= 0 then item:add_proto_expert_info(se.refused) end
end

local function add_command_body(tree, tvb, offset, size, asks)
  tree:add(s.length, tvb(offset + 7, 1))
  tree:add(s.code, tvb(offset + 8, 1))
  local contents = size - 19
  if contents <= 0 then return end
  tree:add(s.item, tvb(offset + 9, 1))
  tree:add(s.contents, tvb(offset + 9, contents))
  if asks then return end
  local code = tvb(offset + 8, 1):uint()
  if code == 2 then
    add_get_contents(tree, tvb, offset + 9, contents)
  elseif code == 3 and contents == 3 and tvb(offset + 9, 1):uint() ~= 12 then -- item 12 has a partition there
    add_status(tree, tvb(offset + 11, 1))
  end
end

local function add_firmware_body(tree, tvb, offset, size, asks)
  if not asks then
    tree:add(s.length, tvb(offset + 7, 1))
    tree:add(s.frame_type, tvb(offset + 8, 1))
    if size > 19 then add_status(tree, tvb(offset + size - 11, 1)) end
    return
  end
  tree:add(s.frame_type, tvb(offset + 10, 1))
  tree:add(s.first, tvb(offset + 11, 4))
  tree:add(s.second, tvb(offset + 15, 4))
  tree:add(s.data_length, tvb(offset + 19, 4))
  if size > 29 then tree:add(s.data, tvb(offset + 23, size - 29)) end
end

local function add_serial_end(tree, tvb, offset, size, is_firmware, asks)
  local crc_at = offset + size - 6
  if not (is_firmware and asks) then tree:add_le(s.nonce, tvb(crc_at - 4, 4)) end
  local range = tvb(crc_at, 4)
  local item = is_firmware and tree:add(s.crc, range) or tree:add_le(s.crc, range)
  local sent = is_firmware and range:uint() or range:le_uint()
  if padded_crc32(tvb:raw(offset + 7, size - 13)) ~= sent then item:add_proto_expert_info(se.crc) end
  if tvb(crc_at + 4, 2):uint() ~= 0xEEFF then item:add_proto_expert_info(se.trailer) end
end

-- Adds the frame in the first of `available` bytes. Returns the text for the info column.
local function add_serial_frame(tree, tvb, offset, available, asks)
  local tag = tvb:raw(offset, 7)
  local is_firmware = tag == FIRMWARE_TAG
  local size = serial_frame_size(tvb, offset, available, is_firmware, asks)
  local item = tree:add(serial, tvb(offset, size and math.min(size, available) or available))
  local text = (is_firmware and "firmware " or "small sensor ") .. (asks and "request" or "reply")
  item:append_text(", " .. text)
  item:add(s.tag, tvb(offset, 7), tag)
  if not size or size > available then
    item:add_proto_expert_info(se.length)
    return text
  end
  local add_body = is_firmware and add_firmware_body or add_command_body
  add_body(item, tvb, offset, size, asks)
  add_serial_end(item, tvb, offset, size, is_firmware, asks)
  return text
end

local function is_tag(tvb, offset, available)
  if available < 7 then return false end
  local tag = tvb:raw(offset, 7)
  return tag == COMMAND_TAG or tag == FIRMWARE_TAG
end

-- ---------------------------------------------------------------------------------------------------------------
-- Payloads

local function hex(text)
  return (text:gsub(".", function(byte) return ("%02x"):format(byte:byte()) end))
end

local function add_layout(tree, frame, model, layout, scale_name, size, asked)
  local complete = true
  for _, place in ipairs(layout) do
    local variable = model.variables[place[1]]
    local position = place[2]
    local length = variable.length >= 0 and variable.length or frame.payload_size - position
    if length > 0 and (not place[3] or place[3] == asked) then
      if position + length > frame.payload_size then
        complete = false
      elseif frame.is_visible or frame.is_shown and tree:referenced(variable.field) then
        add_variable(tree, variable, frame.tvb(frame.payload + position, length), variable[scale_name] or 1)
      end
    end
  end
  if not complete or (size and frame.payload_size < size) then
    tree:add_proto_expert_info(e.short)
  elseif size and frame.payload_size > size then
    local beyond = frame.tvb(frame.payload + size, frame.payload_size - size)
    tree:add(f.payload, beyond):prepend_text("Beyond the variables: ")
    tree:add_proto_expert_info(e.long)
  end
end

local function add_angle(tree, field, range)
  local degrees = range:uint() / 10
  tree:add(field, range, degrees)
end

-- Requests: start angles after the channel. Replies: a count, and pairs of start and end.
local function add_angles(tree, frame)
  local at, last = frame.payload + 1, frame.payload + frame.payload_size
  local index = 0
  while at + 2 <= last do
    local is_end = not frame.is_request and index % 2 == 1
    add_angle(tree, is_end and f.fov_end or f.fov_start, frame.tvb(at, 2))
    at, index = at + 2, index + 1
  end
end

local function add_piece(tree, tvb, offset, size)
  tree:add(f.piece, tvb(offset + 4, 4))
  tree:add(f.pieces, tvb(offset + 8, 4))
  local crc = tree:add(f.piece_crc, tvb(offset + 12, 4))
  local data = tvb(offset + PIECE_HEADER, size - PIECE_HEADER)
  tree:add(f.piece_data, data)
  if crc32(tvb:raw(offset + PIECE_HEADER, size - PIECE_HEADER)) ~= tvb(offset + 12, 4):uint() then
    crc:add_proto_expert_info(e.piece)
  end
  return "piece " .. tvb(offset + 4, 4):uint() .. " of " .. tvb(offset + 8, 4):uint()
end

local function is_piece_size(size)
  return size > PIECE_HEADER and size <= PIECE_HEADER + MAX_PIECE
end

-- A piece of a file is a complete frame inside the payload, after a four-byte code if there is one.
local function add_carried_piece(tree, frame, skipped)
  local tvb, offset, size = frame.tvb, frame.payload + skipped, frame.payload_size - skipped
  local header = HEADERS.Gt
  if not is_piece_size(size - header.size) or tvb:raw(offset, 2) ~= "Gt" then return nil end
  if tvb(offset + header.length, 4):uint() ~= size - header.size then return nil end
  return add_piece(tree, tvb, offset + header.size, size - header.size)
end

-- The bytes 00 01 query or set the baud rate of the line behind the sensor, 00 02 carry a serial frame.
local function add_line(tree, frame, exchange)
  local tvb, offset, size = frame.tvb, frame.payload, frame.payload_size
  if size < 2 then return nil end
  local line = tvb(offset, 2):uint()
  if line == 2 and is_tag(tvb, offset + 2, size - 2) then
    tree:add(f.line, tvb(offset, 2))
    return add_serial_frame(tree, tvb, offset + 2, size - 2, frame.is_request)
  end
  local asked = exchange and exchange.payload or ""
  local is_rate_set = frame.is_request and line == 1 and size == 7 and tvb(offset + 2, 1):uint() == 0x39
  local is_rate = not frame.is_request and asked == "\0\1" and size >= 4
  if is_rate_set or is_rate then
    tree:add(f.baud_rate, tvb(offset + size - 4, 4))
  elseif not (frame.is_request and line == 1 and size == 2) then
    return nil
  end
  return "baud rate"
end

local function add_bytes(tree, frame)
  if frame.payload_size > 0 then tree:add(f.payload, frame.tvb(frame.payload, frame.payload_size)) end
end

-- Returns the command's entry in the model's table, and the size of any four-byte code in the payload.
local function find_command(frame, model)
  local commands = model and model.commands or {}
  if frame.command == EXTENSION and frame.payload_size >= 4 then
    local known = commands[("ff%08x"):format(frame.tvb(frame.payload, 4):uint())]
    if known then return known, 4 end
  end
  return commands[("%02x"):format(frame.command)], 0
end

local function add_known(tree, frame, model, command, skipped, exchange)
  if skipped > 0 then
    local code = frame.tvb(frame.payload, skipped)
    frame.code = code:uint()
    if frame.is_shown then tree:add(f.code, code) end
  end
  local text = command.name
  if frame.is_request then
    local piece = add_carried_piece(tree, frame, skipped)
    if not piece and command.is_upgrade and is_piece_size(frame.payload_size - skipped) then
      piece = add_piece(tree, frame.tvb, frame.payload + skipped, frame.payload_size - skipped)
    end
    if piece then return text .. ", " .. piece end
  end
  local layout = frame.is_request and command.writes or not frame.is_request and command.reads
  if layout and frame.return_code == 0 then
    if frame.is_request then
      add_layout(tree, frame, model, layout, "set_scale", command.write_size)
    else
      local asked = exchange and hex(exchange.payload:sub(skipped + 1)) or ""
      add_layout(tree, frame, model, layout, "scale", command.read_size, asked)
    end
    if command.is_fov and frame.payload_size > 0 then add_angles(tree, frame) end
  elseif frame.payload_size > skipped then
    tree:add(f.payload, frame.tvb(frame.payload + skipped, frame.payload_size - skipped))
  end
  return text
end

local function add_payload(tree, frame, exchange)
  local model = chosen_model()
  local command, skipped = find_command(frame, model)
  if command then return add_known(tree, frame, model, command, skipped, exchange) end
  local text = frame.command == EXTENSION and add_line(tree, frame, exchange)
  if text then return text end
  if frame.is_request then
    local piece = add_carried_piece(tree, frame, 0)
    if piece then return piece end
  end
  add_bytes(tree, frame)
  -- The reply to a serial frame or a four-byte code need not echo it.
  if model and (frame.is_request or frame.command ~= EXTENSION) then tree:add_proto_expert_info(e.unknown) end
  return nil
end

-- ---------------------------------------------------------------------------------------------------------------
-- Frames

local function describe(frame, text)
  local description = frame.is_request and "Request " or "Reply "
  description = description .. (frame.code and ("0x%08X"):format(frame.code) or ("0x%02X"):format(frame.command))
  if text then description = description .. " " .. text end
  if not frame.is_request and frame.return_code ~= 0 then
    description = description .. ", refused with " .. frame.return_code
  end
  return description
end

local ktc_dissector -- known once the protocol is registered

local function add_header(tree, frame, header, available)
  local tvb, offset = frame.tvb, frame.offset
  local item = tree:add(ktc, tvb(offset, available))
  item:add(f.version, tvb(offset, 2), header.version)
  item:add(f.command, tvb(offset + header.command, 1))
  item:add(f.return_code, tvb(offset + header.return_code, 1))
  item:add(f.length, tvb(offset + header.length, 4))
  return item
end

-- Adds a frame with `available` bytes: all of it, unless it is cut off.
local function add_frame(tree, pinfo, asks, tvb, offset, available, header, announced)
  local frame = {
    tvb = tvb,
    offset = offset,
    command = tvb(offset + header.command, 1):uint(),
    return_code = tvb(offset + header.return_code, 1):uint(),
    payload = offset + header.size,
    payload_size = available - header.size,
    is_request = asks,
    is_visible = tree.visible,
  }
  -- The fields are not needed if the packet is only listed, or checked against a filter on other fields.
  frame.is_shown = frame.is_visible or tree:referenced(ktc_dissector)
  local item = frame.is_shown and add_header(tree, frame, header, available) or tree
  if not asks and frame.return_code ~= 0 then item:add_proto_expert_info(e.refused) end
  local exchange = exchange_of(frame, pinfo)
  add_exchange(item, frame, exchange)
  local text
  if announced > frame.payload_size then
    item:add_proto_expert_info(announced > MAX_PAYLOAD and e.huge or e.cut)
    add_bytes(item, frame)
  else
    text = add_payload(item, frame, exchange)
  end
  local description = describe(frame, text)
  if frame.is_shown then item:append_text(", " .. description) end
  return description
end

-- Whether the text may be the incomplete beginning of a frame.
local function is_begin(text)
  for _, start in ipairs(STARTS) do
    if start:sub(1, #text) == text then return true end
  end
  return false
end

-- The position of the next frame after `offset`, or of last bytes that may begin one.
local function next_start(tvb, offset, size)
  local rest = tvb:raw(offset, size - offset)
  local nearest
  for _, start in ipairs(STARTS) do
    local found = rest:find(start, 2, true)
    if found and (not nearest or found < nearest) then nearest = found end
  end
  if nearest then return offset + nearest - 1 end
  for length = math.min(#COMMAND_TAG - 1, #rest - 1), 1, -1 do
    if is_begin(rest:sub(-length)) then return size - length end
  end
  return size
end

-- Returns the header or the tag at `offset`, nil for noise; and the size of its frame, nil while too few
-- bytes have come.
local function frame_at(tvb, offset, available, asks)
  local text = tvb:raw(offset, math.min(available, #COMMAND_TAG))
  local header = HEADERS[text:sub(1, 2)]
  if header then
    if available < header.size then return header, nil end
    local announced = tvb(offset + header.length, 4):uint()
    return header, header.size + announced, announced
  end
  if text == COMMAND_TAG or text == FIRMWARE_TAG then
    return text, serial_frame_size(tvb, offset, available, text == FIRMWARE_TAG, asks)
  end
  return #text < #COMMAND_TAG and is_begin(text) and text or nil, nil
end

-- Asks TCP for the rest of a frame; false if that is not possible.
local function wants_rest(tvb, pinfo, offset, size, needed)
  if pinfo.can_desegment == 0 or size < tvb:reported_len() then return false end
  if needed and needed > MAX_PAYLOAD + 12 then return false end
  pinfo.desegment_offset = offset
  pinfo.desegment_len = needed and needed - (size - offset) or DESEGMENT_ONE_MORE_SEGMENT
  return true
end

local function add_noise(tree, tvb, offset, size)
  tree:add(f.noise, tvb(offset, size)):add_proto_expert_info(e.noise)
  return size .. " bytes outside of frames"
end

-- Adds one frame, or the noise before the next. Returns the position after it and the text for the info
-- column; nil if more bytes are needed.
local function add_next(tree, pinfo, asks, tvb, offset, size)
  local available = size - offset
  local start, needed, announced = frame_at(tvb, offset, available, asks)
  if not start then
    local after = next_start(tvb, offset, size)
    return after, add_noise(tree, tvb, offset, after - offset)
  end
  if not needed or needed > available then
    if wants_rest(tvb, pinfo, offset, size, needed) then return nil end
    if not needed then return size, add_noise(tree, tvb, offset, available) end
    needed = available
  end
  if announced then
    return offset + needed, add_frame(tree, pinfo, asks, tvb, offset, needed, start, announced)
  end
  return offset + needed, add_serial_frame(tree, tvb, offset, needed, asks)
end

function ktc.dissector(tvb, pinfo, tree)
  pinfo.cols.protocol = "KTC"
  local asks = is_request(pinfo)
  ktc_dissector = ktc_dissector or Dissector.get("ktc")
  local offset, size = 0, tvb:captured_len()
  while offset < size do
    local after, text = add_next(tree, pinfo, asks, tvb, offset, size)
    if not after then return end
    -- The fence keeps the text of the segment's earlier frames.
    pinfo.cols.info:set(text .. "  ")
    pinfo.cols.info:fence()
    offset = after
  end
end

-- For captures of the serial lines themselves (link type USER, or "Decode As"): one frame per packet, which
-- is a request or a reply depending on which of them it fits.
function serial.dissector(tvb, pinfo, tree)
  local size = tvb:captured_len()
  if not is_tag(tvb, 0, size) then return 0 end
  pinfo.cols.protocol = "KTC serial"
  local is_firmware = tvb:raw(0, 7) == FIRMWARE_TAG
  local asks = serial_frame_size(tvb, 0, size, is_firmware, true) == size
  pinfo.cols.info:set(add_serial_frame(tree, tvb, 0, size, asks))
  return size
end

DissectorTable.get("tcp.port"):add_for_decode_as(ktc)
DissectorTable.get("udp.port"):add_for_decode_as(serial)
use_ports()
