<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a customer statement as mailed to the customer.

  Receives the customer's CustomerRet with these children added after its own, in this
  order: the period's InvoiceRet elements, the period's ReceivePaymentRet elements, a
  PrintDate (the day the statement is made, as text) and a ForwardBalance (the balance
  before the period, as the decimal text of a double, possibly with an exponent:
  "1.0E-2"). A statement composed a second time from the same list gets a second PrintDate
  and ForwardBalance appended; the last ones are the current ones.

  Shows the balance brought forward, the period's invoices (Subtotal + SalesTaxTotal) and
  payments (TotalAmount) in date order with the balance after each, and the amount due.
-->
<xsl:stylesheet version="1.0"
    xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:exsl="http://exslt.org/common"
    exclude-result-prefixes="exsl">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <!-- A whole document: its first composed customer, or else its first customer. -->
  <xsl:template match="/">
    <xsl:choose>
      <xsl:when test="//CustomerRet[ForwardBalance]">
        <xsl:apply-templates select="(//CustomerRet[ForwardBalance])[1]"/>
      </xsl:when>
      <xsl:otherwise><xsl:apply-templates select="(//CustomerRet)[1]"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="CustomerRet">
    <xsl:variable name="forward-text">
      <xsl:call-template name="plain-number">
        <xsl:with-param name="text" select="ForwardBalance[last()]"/>
      </xsl:call-template>
    </xsl:variable>
    <xsl:variable name="forward">
      <xsl:choose>
        <xsl:when test="number($forward-text) = number($forward-text)"><xsl:value-of select="$forward-text"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>

    <!-- The period's transactions in date order; `change` is what each does to the balance. -->
    <xsl:variable name="entries-tree">
      <xsl:for-each select="InvoiceRet | ReceivePaymentRet">
        <xsl:sort select="TxnDate"/>
        <xsl:variable name="amount-text">
          <xsl:choose>
            <xsl:when test="self::InvoiceRet"><xsl:call-template name="sum-total"/></xsl:when>
            <xsl:otherwise><xsl:value-of select="TotalAmount"/></xsl:otherwise>
          </xsl:choose>
        </xsl:variable>
        <xsl:variable name="amount">
          <xsl:choose>
            <xsl:when test="number($amount-text) = number($amount-text)"><xsl:value-of select="number($amount-text)"/></xsl:when>
            <xsl:otherwise>0</xsl:otherwise>
          </xsl:choose>
        </xsl:variable>
        <xsl:choose>
          <xsl:when test="self::InvoiceRet">
            <entry kind="invoice" date="{TxnDate}" ref="{RefNumber}" due="{DueDate}" amount="{$amount}" change="{$amount}"/>
          </xsl:when>
          <xsl:otherwise>
            <entry kind="payment" date="{TxnDate}" ref="{RefNumber}" method="{PaymentMethodRef/FullName}" amount="{$amount}" change="{-$amount}"/>
          </xsl:otherwise>
        </xsl:choose>
      </xsl:for-each>
    </xsl:variable>
    <xsl:variable name="entries" select="exsl:node-set($entries-tree)/entry"/>
    <xsl:variable name="closing" select="$forward + sum($entries/@change)"/>

    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <xsl:call-template name="title-block">
        <xsl:with-param name="title">STATEMENT</xsl:with-param>
        <xsl:with-param name="fields">
          <field label="Date" value="{PrintDate[last()]}" kind="date"/>
          <field label="Account No." value="{AccountNumber}"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="parties-block">
        <xsl:with-param name="first-label">To</xsl:with-param>
        <xsl:with-param name="first" select="BillAddress"/>
        <xsl:with-param name="first-name">
          <xsl:choose>
            <xsl:when test="normalize-space(CompanyName) != ''"><xsl:value-of select="CompanyName"/></xsl:when>
            <xsl:otherwise><xsl:value-of select="FullName"/></xsl:otherwise>
          </xsl:choose>
        </xsl:with-param>
      </xsl:call-template>
      <tr>
        <td style="padding:0;">
          <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
            <tr bgcolor="{$accent}">
              <td width="100" style="{$head-cell-style}">Date</td>
              <td style="{$head-cell-style}">Transaction</td>
              <td width="95" style="{$head-cell-style}text-align:right;">Charges</td>
              <td width="95" style="{$head-cell-style}text-align:right;">Payments</td>
              <td width="100" style="{$head-cell-style}text-align:right;">Balance</td>
            </tr>
            <tr>
              <td style="{$cell-style}"/>
              <td style="{$cell-style}font-style:italic;">Balance forward</td>
              <td style="{$cell-style}"/>
              <td style="{$cell-style}"/>
              <td style="{$cell-style}{$num-style}">
                <xsl:call-template name="money"><xsl:with-param name="value" select="$forward"/></xsl:call-template>
              </td>
            </tr>
            <xsl:for-each select="$entries">
              <tr>
                <td style="{$cell-style}white-space:nowrap;">
                  <xsl:call-template name="date"><xsl:with-param name="value" select="@date"/></xsl:call-template>
                </td>
                <td style="{$cell-style}">
                  <xsl:choose>
                    <xsl:when test="@kind = 'invoice'">
                      <xsl:text>Invoice</xsl:text>
                      <xsl:if test="normalize-space(@ref) != ''"><xsl:text> #</xsl:text><xsl:value-of select="@ref"/></xsl:if>
                      <xsl:if test="normalize-space(@due) != ''">
                        <span style="font-size:11px;color:{$muted};">
                          <xsl:text>&#160;&#160;due </xsl:text>
                          <xsl:call-template name="date"><xsl:with-param name="value" select="@due"/></xsl:call-template>
                        </span>
                      </xsl:if>
                    </xsl:when>
                    <xsl:otherwise>
                      <xsl:text>Payment</xsl:text>
                      <xsl:if test="normalize-space(@ref) != ''"><xsl:text> #</xsl:text><xsl:value-of select="@ref"/></xsl:if>
                      <xsl:if test="normalize-space(@method) != ''">
                        <xsl:text> (</xsl:text><xsl:value-of select="@method"/><xsl:text>)</xsl:text>
                      </xsl:if>
                    </xsl:otherwise>
                  </xsl:choose>
                </td>
                <td style="{$cell-style}{$num-style}">
                  <xsl:if test="@kind = 'invoice'">
                    <xsl:call-template name="money"><xsl:with-param name="value" select="@amount"/></xsl:call-template>
                  </xsl:if>
                </td>
                <td style="{$cell-style}{$num-style}">
                  <xsl:if test="@kind = 'payment'">
                    <xsl:call-template name="money"><xsl:with-param name="value" select="@amount"/></xsl:call-template>
                  </xsl:if>
                </td>
                <td style="{$cell-style}{$num-style}">
                  <xsl:call-template name="money">
                    <xsl:with-param name="value" select="$forward + sum(preceding-sibling::entry/@change) + @change"/>
                  </xsl:call-template>
                </td>
              </tr>
            </xsl:for-each>
          </table>
        </td>
      </tr>
      <xsl:call-template name="totals-block">
        <xsl:with-param name="rows">
          <row label="Amount Due" value="{$closing}" strong="yes"/>
        </xsl:with-param>
      </xsl:call-template>
    </table>
  </xsl:template>

</xsl:stylesheet>
