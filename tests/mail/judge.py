#!/usr/bin/env python3
"""What Python's email package makes of a message: fields, then one line for each part, then what it finds wrong."""
import email
import email.policy
import hashlib
import sys

with open(sys.argv[1], "rb") as file:
    message = email.message_from_binary_file(file, policy=email.policy.default)
for name in sys.argv[2:]:
    for value in message.get_all(name, []):
        print(f"{name}: {value}")
defects = [field.defects for field in message.values()]
for part in message.walk():
    defects.append(part.defects)
    if part.is_multipart():
        print(part.get_content_type())
        continue
    file_name = part.get_filename()
    if file_name:
        shown = hashlib.sha256(part.get_payload(decode=True)).hexdigest()[:8]
    else:
        shown = repr(part.get_content())
    print(f"{part.get_content_type()} {file_name or ''} {shown}")
for found in defects:
    for defect in found:
        print(f"defect: {defect!r}")
