// ksef-client-ts signs in, sends an invoice in an interactive session and fetches what comes of it.
import * as ksef from "ksef-client-ts";
import { address, assert, formCode, invoice, nip, step, today, token, until_processed, waiting, yesterday } from "./support/job.mjs";

const client = new ksef.KSeFClient({ baseUrl: address });
const xml = invoice("TS/1");

await step("login with a token", () => client.loginWithToken(token, nip));

await step("refresh by itself after 401", async () => {
  client.authManager.setAccessToken("outdated");
  await client.limits.getContextLimits();
  assert.notEqual(client.authManager.getAccessToken(), "outdated");
});

const session = await step("open an online session", () => ksef.openOnlineSession(client, { formCode }));
const reference = await step("send an invoice", () => session.sendInvoice(xml));
const accepted = await step("status of the invoice", async () => {
  const status = await until_processed(() => client.sessionStatus.getSessionInvoice(session.sessionRef, reference));
  assert.equal(status.status.code, 200, JSON.stringify(status.status));
  assert.ok(ksef.isValidKsefNumber(status.ksefNumber), status.ksefNumber);
  return status;
});

await step("a duplicate is refused", async () => {
  const again = await session.sendInvoice(xml);
  const status = await until_processed(() => client.sessionStatus.getSessionInvoice(session.sessionRef, again));
  assert.equal(status.status.code, 440);
  assert.equal(status.status.extensions.originalKsefNumber, accepted.ksefNumber);
});

await step("close and UPO of the session", async () => {
  await session.close();
  const upo = await session.waitForUpoParsed(waiting);
  assert.deepEqual(upo.parsed[0].dokumenty.map((it) => it.numerKSeFDokumentu), [accepted.ksefNumber]);
  assert.equal(upo.successfulInvoiceCount, 1);
  assert.equal(upo.failedInvoiceCount, 1);
});

await step("UPO of the invoice", async () => {
  const { upo } = await client.sessionStatus.getInvoiceUpoByKsefNumber(session.sessionRef, accepted.ksefNumber);
  assert.equal(ksef.parseUpoXml(upo).dokumenty[0].numerFaktury, "TS/1");
  const byReference = await client.sessionStatus.getInvoiceUpoByReference(session.sessionRef, reference);
  assert.equal(byReference.upo, upo);
});

await step("list of sessions and invoices", async () => {
  const { sessions } = await client.sessionStatus.getSessions("Online", 10);
  assert.ok(sessions.some((it) => it.referenceNumber === session.sessionRef));
  const { invoices } = await client.sessionStatus.getSessionInvoices(session.sessionRef);
  assert.deepEqual(invoices.map((it) => it.status.code), [200, 440]);
  const failed = await client.sessionStatus.getSessionFailedInvoices(session.sessionRef);
  assert.equal(failed.invoices.length, 1);
});

await step("metadata", async () => {
  const filters = { subjectType: "Subject1", dateRange: { dateType: "Issue", from: yesterday, to: today } };
  const found = await ksef.collectAllInvoiceMetadata(client, filters);
  const entry = found.find((it) => it.ksefNumber === accepted.ksefNumber);
  assert.equal(entry.invoiceNumber, "TS/1");
  assert.equal(entry.invoiceHash, ksef.sha256Base64(Buffer.from(xml)));
});

await step("download", async () => {
  const answer = await client.invoices.getInvoice(accepted.ksefNumber);
  assert.equal(answer.xml, xml);
});

await step("tokens: make, use, revoke", async () => {
  const made = await client.tokens.generateToken({ description: "Próba ź", permissions: ["InvoiceRead"] });
  const other = new ksef.KSeFClient({ baseUrl: address });
  await other.loginWithToken(made.token, nip);
  await assert.rejects(ksef.openOnlineSession(other, { formCode }), { statusCode: 403 });
  await client.tokens.revokeToken(made.referenceNumber);
  assert.equal((await client.tokens.getToken(made.referenceNumber)).status, "Revoked");
  await assert.rejects(new ksef.KSeFClient({ baseUrl: address }).loginWithToken(made.token, nip), /450/);
});

await step("limits", async () => {
  assert.ok((await client.limits.getContextLimits()).onlineSession.maxInvoices > 0);
  assert.ok((await client.limits.getSubjectLimits()).certificate.maxCertificates > 0);
  assert.ok((await client.limits.getRateLimits()).invoiceSend.perSecond > 0);
});

await step("sign out", async () => {
  await client.activeSessions.revokeCurrentSession();
  await assert.rejects(client.auth.refreshAccessToken(client.authManager.getRefreshToken()));
});
