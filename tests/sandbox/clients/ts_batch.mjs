// ksef-client-ts sends packages in several parts, as both kinds of archive, and reads what comes of them.
import * as ksef from "ksef-client-ts";
import { address, assert, formCode, invoice, nip, step, token, waiting } from "./support/job.mjs";

const client = new ksef.KSeFClient({ baseUrl: address });
await step("login with a token", () => client.loginWithToken(token, nip));

const documents = (from, count) =>
  Array.from({ length: count }, (_, i) => ({ fileName: `faktura_${from + i}.xml`, content: Buffer.from(invoice(`TS/P/${from + i}`)) }));
const options = (compressionType) => ({ formCode, compressionType, maxPartSize: 1000, pollOptions: waiting, parallelism: 3 });

for (const [name, compress, from] of [["Zip", ksef.createZip, 1], ["TarGz", ksef.createTarGz, 51]]) {
  const archive = await compress(documents(from, 20));
  assert.ok(archive.length > 2000, "an archive of several parts");
  const { sessionRef, upo } = await step(`a package in parts, ${name}`, () =>
    ksef.uploadBatchParsed(client, archive, options(name)));
  await step(`its UPO, ${name}`, async () => {
    assert.equal((await client.sessionStatus.getSessionStatus(sessionRef)).status.code, 200);
    assert.equal(upo.successfulInvoiceCount, 20);
    const numbers = upo.parsed[0].dokumenty.map((it) => it.numerFaktury);
    assert.deepEqual(new Set(numbers), new Set(Array.from({ length: 20 }, (_, i) => `TS/P/${from + i}`)));
  });
  await step(`its invoices, ${name}`, async () => {
    const { invoices } = await client.sessionStatus.getSessionInvoices(sessionRef, 1000);
    assert.equal(invoices.length, 20);
    assert.ok(invoices.every((it) => it.status.code === 200 && it.invoiceFileName.startsWith("faktura_")));
  });
}

await step("sessions that succeeded", async () => {
  const { sessions } = await client.sessionStatus.getSessions("Batch", 10, undefined, { statuses: ["Succeeded"] });
  assert.equal(sessions.length, 2);
});
