#!/usr/bin/env python3
"""Runs a command on a system with a phone: umockdev-wrapper phone.py FOLDER LIMIT COMMAND [ARGUMENT]...

The phone answers on an emulated USB bus, as one that speaks MTP does. It has the files of the folder, and at the end the
folder has what the phone then holds. After so many bytes, unless 0, somebody pulls the plug.
"""
import os
import shutil
import struct
import subprocess
import sys

import gi

gi.require_version("UMockdev", "1.0")
from gi.repository import UMockdev  # noqa: E402

STORAGE, ROOT, FOLDER_FORMAT, MP3_FORMAT = 0x10001, 0xFFFFFFFF, 0x3001, 0x3009
FILE_NAME = 0xDC07
COMMAND, DATA, RESPONSE = 1, 2, 3
OK, BAD_HANDLE, UNSUPPORTED = 0x2001, 0x2009, 0x2005
BULK_IN, BULK_OUT, INTERRUPT_IN = 0x81, 0x02, 0x83
NO_DATA, NO_DEVICE, AGAIN = 61, 19, 11  # errors of calls
STALL, CANCELLED, SHUT_DOWN = -32, -2, -108  # and states of requests
DESCRIPTORS = ("12010002000000 40 d118 e14e 0001 01 02 03 01"  # high speed, one configuration
               "09022700 01 01 00 80 fa" "090400 00 03 ff ff 00 04"
               "0705 81 02 0002 00" "0705 02 02 0002 00" "0705 83 03 1c00 06").replace(" ", "")


def text(value):
    return struct.pack("B", len(value) + 1) + (value + "\0").encode("utf-16-le") if value else b"\0"


def array(kind, values):
    return struct.pack(f"<I{len(values)}{kind}", len(values), *values)


class Phone:
    """Objects by handle, and what the host has sent and is to get."""

    def __init__(self, folder, limit):
        self.limit = limit
        self.sent = 0
        self.node = ""
        self.objects = {}
        self.answers = []  # transfers that the host has not read yet
        self.command = None
        self.received = b""
        self.new = 0
        parents = {folder: ROOT}
        for place, folders, files in os.walk(folder):
            for name in sorted(folders) + sorted(files):
                path = os.path.join(place, name)
                content = None if name in folders else open(path, "rb").read()
                parents[path] = self.add(parents[place], name, content)

    def has_left(self):
        if self.limit == 0 or self.sent < self.limit:
            return False
        if os.path.exists(self.node):
            os.remove(self.node)
        return True

    def add(self, parent, name, content):
        handle = len(self.objects) + 1
        self.objects[handle] = [parent, name, content]
        return handle

    def save(self, folder):
        shutil.rmtree(folder)
        os.makedirs(folder)
        paths = {ROOT: folder}
        for handle, (parent, name, content) in self.objects.items():
            paths[handle] = os.path.join(paths.get(parent, folder), name)
            if content is None:
                os.makedirs(paths[handle])
            else:
                with open(paths[handle], "wb") as file:
                    file.write(content)

    def info(self, handle):
        parent, name, content = self.objects[handle]
        kind = FOLDER_FORMAT if content is None else MP3_FORMAT
        return (struct.pack("<IHHIHIIIIIII", STORAGE, kind, 0, len(content or b""), 0, 0, 0, 0, 0, 0, 0,
                            0 if parent == ROOT else parent)
                + struct.pack("<HII", 1 if content is None else 0, 0, 0)
                + text(name) + text("") + text("20240102T030405") + text(""))

    def data_of(self, code, values):
        """The data that an operation gives; None for one that gives none."""
        if code == 0x1001:
            operations = [0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1007, 0x1008, 0x1009, 0x100B, 0x100C, 0x100D, 0x101B,
                          0x9801, 0x9802, 0x9804]
            return (struct.pack("<HIH", 100, 6, 100) + text("microsoft.com: 1.0;") + struct.pack("<H", 0)
                    + array("H", operations) + array("H", []) + array("H", []) + array("H", [])
                    + array("H", [FOLDER_FORMAT, MP3_FORMAT])
                    + text("Maker") + text("Phone 7") + text("1.0") + text("0A1B"))
        if code == 0x9801:  # the properties of objects: their names
            return array("H", [FILE_NAME])
        if code == 0x9802:  # a text that can be set
            return struct.pack("<HHB", FILE_NAME, 0xFFFF, 1) + text("") + struct.pack("<IB", 0, 0)
        if code == 0x1004:
            return array("I", [STORAGE])
        if code == 0x1005:
            return struct.pack("<HHHQQI", 3, 2, 0, 1 << 30, 1 << 29, 1000) + text("Card") + text("")
        if code == 0x1007:
            parent = ROOT if values[2] in (0, ROOT) else values[2]
            return array("I", [handle for handle, each in self.objects.items() if each[0] == parent])
        if code == 0x1008:
            return self.info(values[0])
        if code == 0x1009:
            return self.objects[values[0]][2]
        if code == 0x101B:
            return self.objects[values[0]][2][values[1]:values[1] + values[2]]
        return None

    def answer(self, code, values, sent):
        """Carries out an operation; puts its transfers into the answers."""
        status, results = OK, []
        if code in (0x1008, 0x1009, 0x100B, 0x101B) and values[0] not in self.objects:
            status = BAD_HANDLE
        elif code == 0x100B:
            del self.objects[values[0]]
        elif code == 0x100C:
            kind, = struct.unpack_from("<H", sent, 4)
            length = sent[52]
            name = sent[53:53 + 2 * length].decode("utf-16-le").rstrip("\0")
            self.new = self.add(ROOT if values[1] in (0, ROOT) else values[1], name,
                                None if kind == FOLDER_FORMAT else b"")
            results = [STORAGE, values[1], self.new]
        elif code == 0x100D:
            self.objects[self.new][2] = sent
        elif code == 0x9804:
            self.objects[values[0]][1] = sent[1:].decode("utf-16-le").rstrip("\0")
        elif code not in (0x9801, 0x9802, 0x1001, 0x1002, 0x1003, 0x1004, 0x1005, 0x1007, 0x1008, 0x1009, 0x101B):
            status = UNSUPPORTED
        data = self.data_of(code, values) if status == OK else None
        if data is not None:
            self.answers.append(struct.pack("<IHHI", 12 + len(data), DATA, code, self.transaction) + data)
            if code == 0x101B:
                results = [len(data)]
        self.answers.append(struct.pack(f"<IHHI{len(results)}I", 12 + 4 * len(results), RESPONSE, status,
                                        self.transaction, *results))

    def write(self, data):
        """What the host sends: a command, or the data of one, in pieces."""
        if self.command is None:
            length, kind, code, self.transaction = struct.unpack_from("<IHHI", data)
            assert kind == COMMAND and length == len(data), data
            values = struct.unpack_from(f"<{(length - 12) // 4}I", data, 12)
            if code not in (0x100C, 0x100D, 0x9804):
                return self.answer(code, values, b"")
            self.command = (code, values)
            return None
        self.received += data
        length, = struct.unpack_from("<I", self.received)
        if len(self.received) >= length:
            (code, values), sent = self.command, self.received[12:]
            self.command, self.received = None, b""
            self.answer(code, values, sent)
        return None

    def read(self, size):
        """What the host gets; None while there is nothing."""
        if not self.answers:
            return None
        data, rest = self.answers[0][:size], self.answers[0][size:]
        self.sent += len(data)
        self.answers[:1] = [rest] if rest else []
        return data


class Bus(UMockdev.IoctlBase):
    """The calls of a program on the device node; see linux/usbdevice_fs.h."""

    def __init__(self, phone):
        super().__init__()
        self.phone = phone
        self.waiting = []  # requests that are not answered, with their structures
        self.done = []

    def finish(self, urb, status, actual):
        urb.update(4, list(struct.pack("=i", status)))
        urb.update(28, list(struct.pack("=i", actual)))
        self.done.append(urb)

    def serve(self):
        for entry in list(self.waiting):
            urb, buffer, endpoint, size = entry
            data = self.phone.read(size) if endpoint == BULK_IN else None
            if data is None:
                continue
            self.waiting.remove(entry)
            buffer.update(0, list(data))
            self.finish(urb, 0, len(data))

    def do_handle_ioctl(self, client):
        number = client.get_request() & 0xFF
        if self.phone.has_left():
            for urb, *_ in self.waiting:
                self.finish(urb, SHUT_DOWN, 0)
            self.waiting.clear()
        if number == 10 and self.phone.has_left():
            client.complete(-1, NO_DEVICE)
        elif number == 10:  # a request
            urb = client.get_arg().resolve(0, 56)
            kind, endpoint, _, _, _, size = struct.unpack_from("=BBxxiIxxxxQi", bytes(urb.retrieve()))
            buffer = urb.resolve(16, size) if size > 0 else None
            if kind == 2:  # a control transfer, of which the phone knows none
                self.finish(urb, STALL, 0)
            elif endpoint == BULK_OUT:
                data = bytes(buffer.retrieve()) if buffer else b""
                if data:
                    self.phone.write(data)
                self.finish(urb, 0, len(data))
            else:
                self.waiting.append((urb, buffer, endpoint, size))
            self.serve()
            client.complete(0, 0)
        elif number in (12, 13):  # what has been answered
            if self.done:
                client.get_arg().resolve(0, 8).set_ptr(0, self.done.pop(0))
                client.complete(0, 0)
            else:
                client.complete(-1, AGAIN)
        elif number == 11:  # taken back
            for urb, *_ in self.waiting:
                self.finish(urb, CANCELLED, 0)
            self.waiting.clear()
            client.complete(0, 0)
        elif number == 26:  # what the bus can do
            client.get_arg().resolve(0, 4).update(0, list(struct.pack("=I", 7)))
            client.complete(0, 0)
        elif number == 8:  # which driver has it: none
            client.complete(-1, NO_DATA)
        else:
            client.complete(0, 0)
        return True


def main():
    folder, limit, command = sys.argv[1], int(sys.argv[2]), sys.argv[3:]
    testbed = UMockdev.Testbed.new()
    testbed.add_from_string(
        "P: /devices/usb1/1-2\nN: bus/usb/001/004\nE: DEVNAME=/dev/bus/usb/001/004\nE: DEVTYPE=usb_device\n"
        "E: SUBSYSTEM=usb\nE: BUSNUM=001\nE: DEVNUM=004\nE: MAJOR=189\nE: MINOR=3\nA: busnum=1\\n\nA: devnum=4\\n\n"
        "A: speed=480\\n\nA: bConfigurationValue=1\\n\nA: serial=0A1B\\n\nA: product=Phone 7\\n\n"
        f"H: descriptors={DESCRIPTORS.upper()}\n")
    phone = Phone(folder, limit)
    phone.node = testbed.get_root_dir() + "/dev/bus/usb/001/004"
    bus = Bus(phone)
    testbed.attach_ioctl("/dev/bus/usb/001/004", bus)
    # A heap of the program's own would call what the emulation replaces before that is there.
    os.environ["LD_PRELOAD"] += ":libc.so.6"
    code = subprocess.call(command)
    phone.save(folder)
    return code


sys.exit(main())
