local parts = {}
for i = 1, 5000 do parts[#parts + 1] = string.format("%d:%a", i, i / 3) end
local text = table.concat(parts, ";")
print(#text, select(2, text:gsub("(%d+):0x1%.5+p", "%1")), text:sub(-20))
table.sort(parts, function(a, b) return a:reverse() < b:reverse() end)
print(parts[1], parts[#parts], 7 // 2, -7 % 3, 1 << 62, math.maxinteger + 1 == math.mininteger)

local function producer(n) return coroutine.wrap(function() for i = 1, n do coroutine.yield(i * i) end end) end
local sum = 0
for square in producer(2000) do sum = sum + square end
print(sum, pcall(error, { code = 3 }), select("#", table.unpack(parts, 1, 200)))
local weak = setmetatable({}, { __mode = "k" })
for _ = 1, 2000 do weak[{}] = string.rep("x", 100) end
collectgarbage()
print(next(weak), xpcall(function() local x; return x.y end, function(m) return m:match("index a nil") end))
error("the end")
